#include "vxreg/Commands.h"

#include "common/CommandLine.h"
#include "common/Failure.h"
#include "common/Input.h"
#include "common/Output.h"
#include "vxreg/Classes.h"
#include "vxreg/Results.h"
#include "vxreg/TextForm.h"
#include "vxreg/Texts.h"
#include "vxreg/Verify.h"

#include <vx/Exception.h>
#include <vx/Result.h>
#include <vx/TerminatedText.h>
#include <vx/util/RegKeyIterator.h>
#include <vxsys/Component.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <limits>
#include <pwd.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace vxreg {

namespace {

using Arguments = std::vector<std::string>;
using vx::String;
using vx::SystemName;
using vx::TerminatedText;
using vx::util::RegistryKey;
using vxtools::Failure;
using vxtools::Messages;

struct Context {
    Messages& messages;
    const Switches& switches;
};

RegistryKey keyOf(const std::string& path)
{
    try {
        return RegistryKey(fromUtf8(path));
    } catch (const vx::Exception&) {
        throw Failure(path, NO_HIVE());
    }
}

std::vector<std::string> hiveNames()
{
    std::vector<std::string> names;
    for (std::uint32_t hive = VX_HKEY_CLASSES_32; hive <= VX_HKEY_CONFIG_64; ++hive)
        names.push_back(RegistryKey(static_cast<ENUM_VX_HKEY>(hive), String()).getKey().toUtf8());
    return names;
}

std::string joined(const auto& words, const char* between)
{
    std::string text;
    for (const auto& word : words)
        text.append(text.empty() ? "" : between).append(word);
    return text;
}

/// Runs `work`. Its failures are reported as those of `what`, by the text that `explain` has for them.
template <class Work>
auto about(const vxtools::Text& what, Work&& work, vxtools::Text (*explain)(const vx::Exception&) = textOf)
{
    try {
        return work();
    } catch (const vx::Exception& failure) {
        throw Failure(what, explain(failure));
    }
}

/// Of what can be read. If its removal is denied, only the registry of all users has it.
vxtools::Text textOfRemoval(const vx::Exception& failure)
{
    return failure.getResult() == vx::RESULT_ACCESS_DENIED ? ONLY_MACHINE_HAS() : textOf(failure);
}

void print(const std::string& line)
{
    std::cout << line << '\n';
}

String libraryPath(const std::string& name)
{
    std::error_code ignored; // loading the library reports what is wrong with the path
    const std::filesystem::path path = std::filesystem::absolute(name, ignored).lexically_normal();
    return fromUtf8(path.native());
}

/// Returns the result of the library's function, which is one of the store.
std::int32_t callLibrary(const String& path, std::int32_t (*call)(const char16_t*))
{
    const std::int32_t result = call(TerminatedText(path));
    if (!vx::failed(result))
        return result;
    const std::int32_t loading = VXComCheckLibrary(TerminatedText(path));
    if (vx::failed(loading))
        throw Failure(path.toUtf8(), textOfLibrary(loading));
    return result;
}

void registerLibrary(const Arguments& arguments, const Context& context)
{
    const String path = libraryPath(arguments[0]);
    if (!context.switches.isForced)
        requireRegistrable(path.toUtf8(), context.messages);
    if (const std::int32_t result = callLibrary(path, VXComRegisterLibrary); vx::failed(result))
        throw Failure(path.toUtf8(), textOfAddition(result));
}

/// The classes that have this library, in the registry of the user or in that of all users.
std::vector<std::string> classesOf(const Classes& classes, const String& path)
{
    std::vector<std::string> found;
    for (const auto& [id, library] : classes.libraryOf) {
        if (isSameFile(library, path.toUtf8()))
            found.push_back(id);
    }
    return found;
}

vxtools::Text registryOf(const Context& context)
{
    if (context.switches.isForMachine)
        return FOR_ALL_USERS();
    if (const char* place = std::getenv("VXSYS4_REGISTRY"); place != nullptr && *place != '\0')
        return IN_REGISTRY(place);
    const passwd* const user = ::getpwuid(::geteuid());
    return FOR_USER(user != nullptr ? std::string(user->pw_name) : std::to_string(::geteuid()));
}

/// Does what the library would do, if its file were still there.
void removeClasses(const Classes& classes, const std::vector<std::string>& ids)
{
    for (const std::string& id : ids) {
        std::vector<std::string> keys {"CLSID\\" + id};
        for (const auto& [name, idOfName] : classes.classOf) {
            if (idOfName == id)
                keys.push_back(name);
        }
        for (const std::string& key : keys) {
            const RegistryKey branch(VX_HKEY_CLASSES_32, fromUtf8(key));
            about(
                branch.getKey().toUtf8(), [&] { branch.remove(); }, textOfRemoval);
        }
    }
}

void unregisterLibrary(const Arguments& arguments, const Context& context)
{
    const String path = libraryPath(arguments[0]);
    const Classes classes = readClasses();
    const std::vector<std::string> ids = classesOf(classes, path);
    std::error_code ignored;
    if (!ids.empty() && !std::filesystem::exists(path.toUtf8(), ignored))
        return removeClasses(classes, ids);
    // Another copy of the library may be registered, whose classes this one would remove.
    const std::int32_t result = callLibrary(path, ids.empty() ? VXComCheckLibrary : VXComUnregisterLibrary);
    if (ids.empty() || result == vx::RESULT_NOT_FOUND)
        throw Failure(path.toUtf8(), NOT_REGISTERED(registryOf(context)));
    if (result == vx::RESULT_ACCESS_DENIED)
        throw Failure(path.toUtf8(), ONLY_MACHINE_HAS());
    if (vx::failed(result))
        throw Failure(path.toUtf8(), textOfStore(result));
}

void resolve(const Arguments& arguments, const Context& context)
{
    const String progId = fromUtf8(arguments[0]);
    _GUID classId;
    const std::int32_t result = VXComClassIDFromProgID(TerminatedText(progId), &classId);
    if (result == vx::RESULT_CLASS_NOT_AVAILABLE)
        throw Failure(arguments[0], NO_SUCH_CLASS());
    if (vx::failed(result))
        throw Failure(arguments[0], textOfStore(result));
    char16_t identifier[39];
    VXComStringFromGUID(&classId, identifier, std::size(identifier));
    print(context.messages.say(CLASS_IS(String(identifier).toUtf8())));

    const RegistryKey server(VX_HKEY_CLASSES_32, String(u"CLSID\\") + identifier + u"\\InprocServer32");
    const std::string serverName = server.getKey().toUtf8();
    const String library = about(serverName, [&] { return server.getValueString(String()); });
    print(context.messages.say(LIBRARY_IS(library.toUtf8())));
    if (const std::int32_t loading = VXComCheckLibrary(SystemName(library)); vx::failed(loading))
        throw Failure(library.toUtf8(), textOfLibrary(loading));
    void* object = nullptr;
    const std::int32_t made = VXModuleComCreateObject(nullptr, &classId, nullptr, &IVXUnknown::IID, &object);
    if (vx::failed(made))
        throw Failure(library.toUtf8(), textOfLibrary(made));
    static_cast<IVXUnknown*>(object)->Release();
    print(context.messages.say(OBJECT_CREATED()));
}

void writeValues(std::ostream& target, const RegistryKey& key)
{
    const auto names = key.getValueIterator();
    while (names->hasNext()) {
        const String name(*names->next());
        target << lineOfValue(name, readValue(key, name)) << '\n';
    }
}

void list(const Arguments& arguments, const Context&)
{
    if (arguments.empty()) {
        for (const std::string& name : hiveNames())
            print(name);
        return;
    }
    const RegistryKey key = keyOf(arguments[0]);
    about(arguments[0], [&] {
        const auto subkeys = key.getSubkeyIterator();
        while (subkeys->hasNext())
            print(lineOfKey(*subkeys->next()));
        writeValues(std::cout, key);
    });
}

String nameIn(const Arguments& arguments, std::size_t at)
{
    return at < arguments.size() ? fromUtf8(arguments[at]) : String();
}

vxtools::Text describe(const Arguments& arguments)
{
    return arguments.size() > 1 ? VALUE_OF(arguments[0], arguments[1]) : vxtools::Text(arguments[0]);
}

void get(const Arguments& arguments, const Context&)
{
    const RegistryKey key = keyOf(arguments[0]);
    const vxtools::Text what = arguments.size() > 1 ? describe(arguments) : DEFAULT_VALUE_OF(arguments[0]);
    print(about(what, [&] { return plainText(readValue(key, nameIn(arguments, 1))); }));
}

void set(const Arguments& arguments, const Context&)
{
    const Value value = parseValue(arguments.size() > 3 ? arguments[3] : "text", arguments[2]);
    const RegistryKey key = keyOf(arguments[0]);
    about(
        describe(arguments), [&] { writeValue(key, nameIn(arguments, 1), value); }, textOfAddition);
}

void remove(const Arguments& arguments, const Context&)
{
    const RegistryKey key = keyOf(arguments[0]);
    const vxtools::Text what = describe(arguments);
    if (arguments.size() > 1) {
        const String name = nameIn(arguments, 1);
        about(what, [&] { return key.getValueType(name); });
        about(
            what, [&] { key.deleteValue(name); }, textOfRemoval);
        return;
    }
    if (key.getKey(true).isEmpty())
        throw Failure(what, STAYS());
    about(what, [&] { return key.getSubkeyIterator(); });
    about(
        what, [&] { key.remove(); }, textOfRemoval);
}

void writeBranch(std::ostream& target, const RegistryKey& key)
{
    target << lineOfKey(key) << '\n';
    writeValues(target, key);
    const auto subkeys = key.getSubkeyIterator();
    while (subkeys->hasNext())
        writeBranch(target, *subkeys->next());
}

void verify(const Arguments& arguments, const Context& context)
{
    verifyLibraries(arguments, context.messages);
}

void exportBranch(const Arguments& arguments, const Context&)
{
    const RegistryKey key = keyOf(arguments[0]);
    std::ostringstream text;
    about(arguments[0], [&] { writeBranch(text, key); });
    vxtools::Output file(arguments.size() < 2 ? "-" : arguments[1]);
    file.write(text.view());
    file.commit();
}

std::string readAll(const vxtools::Input& input)
{
    std::string text;
    char block[64 * 1024];
    for (;;) {
        const ssize_t got = ::read(input.descriptor(), block, sizeof block);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throw Failure(input.name(), vxtools::textOfError(errno));
        if (got == 0)
            return text;
        text.append(block, static_cast<std::size_t>(got));
    }
}

void importBranch(const Arguments& arguments, const Context&)
{
    const vxtools::Input input(arguments.empty() ? "-" : arguments[0]);
    std::istringstream text(readAll(input));
    std::vector<Entry> entries;
    try {
        entries = parseEntries(text);
    } catch (const vxtools::UsageError& failure) {
        throw Failure(input.name(), failure.text());
    }
    for (const Entry& entry : entries) {
        const auto add = [&] {
            if (entry.hasValue)
                writeValue(entry.key, entry.name, entry.value);
            else
                vx::throwIfFailed(VXRegistryCreateKey(entry.key.getVXHKEY(), SystemName(entry.key.getKey(true))));
        };
        about(entry.key.getKey().toUtf8(), add, textOfAddition);
    }
}

enum class Change { NONE, REMOVES, ADDS };

struct Command {
    std::string_view name;
    const char* arguments;
    std::size_t least;
    std::size_t most;
    void (*run)(const Arguments& arguments, const Context& context);
    Change change = Change::NONE;
};

constexpr Command COMMANDS[] = {
    {"register", "LIBRARY", 1, 1, registerLibrary, Change::ADDS},
    {"unregister", "LIBRARY", 1, 1, unregisterLibrary, Change::REMOVES},
    {"resolve", "PROGID", 1, 1, resolve},
    {"verify", "LIBRARY...", 1, std::numeric_limits<std::size_t>::max(), verify},
    {"list", "[KEY]", 0, 1, list},
    {"get", "KEY [NAME]", 1, 2, get},
    {"set", "KEY NAME VALUE [TYPE]", 3, 4, set, Change::ADDS},
    {"delete", "KEY [NAME]", 1, 2, remove, Change::REMOVES},
    {"export", "KEY [FILE]", 1, 2, exportBranch},
    {"import", "[FILE]", 0, 1, importBranch, Change::ADDS},
};

/// Makes the commands of this process work on the registry of all users. All of them may read it: the rights of its
/// files follow those of its folder.
void useMachineRegistry(Change change)
{
    char place[PATH_MAX];
    vx::throwIfFailed(VXRegistryGetMachinePlace(place, sizeof place));
    if (*place == '\0')
        throw Failure(MACHINE(), NO_MACHINE());
    if (change == Change::ADDS) {
        ::umask(S_IWGRP | S_IWOTH);
        std::error_code error;
        std::filesystem::create_directories(place, error);
        if (error)
            throw Failure(place, vxtools::textOfError(error.value()));
    }
    if (change != Change::NONE && ::access(place, W_OK) != 0 && errno != ENOENT)
        throw Failure(MACHINE(), ONLY_OWNER(place));
    ::setenv("VXSYS4_REGISTRY", place, 1);
    ::setenv("VXSYS4_MACHINE_REGISTRY", "", 1);
}

} // namespace

std::string usage(const vx::util::OptionTable& options, Messages& messages)
{
    return messages.say(HELP_HEAD) + "\n\n" + vxtools::helpOf(options, u"vxreg.help.", messages) + '\n'
        + messages.say(HELP_FOOT(joined(hiveNames(), "\n  "))) + '\n';
}

std::vector<std::string_view> commandNames()
{
    std::vector<std::string_view> names;
    for (const Command& command : COMMANDS)
        names.push_back(command.name);
    return names;
}

void run(const std::vector<std::string>& arguments, const Switches& switches, Messages& messages)
{
    if (arguments.empty())
        throw vxtools::UsageError(NO_COMMAND(joined(commandNames(), ", ")));
    for (const Command& command : COMMANDS) {
        if (command.name != arguments[0])
            continue;
        const Arguments rest(arguments.begin() + 1, arguments.end());
        if (rest.size() < command.least || rest.size() > command.most)
            throw vxtools::UsageError(OTHER_ARGUMENTS(arguments[0], command.arguments));
        if (switches.isForced && command.run != registerLibrary)
            throw vxtools::UsageError(vxtools::ONLY_WITH("--force", "register"));
        if (switches.isForMachine) {
            messages.say(MACHINE()); // loads the texts, which may be registered for the user alone
            useMachineRegistry(command.change);
        }
        command.run(rest, {messages, switches});
        return;
    }
    throw vxtools::UsageError(NO_SUCH_COMMAND(arguments[0], joined(commandNames(), ", ")));
}

} // namespace vxreg
