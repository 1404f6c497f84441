#include "vxreg/Commands.h"

#include "common/CommandLine.h"
#include "common/Failure.h"
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
#include <fstream>
#include <iostream>
#include <limits>
#include <sstream>
#include <sys/stat.h>

namespace vxreg {

namespace {

using Arguments = std::vector<std::string>;
using vx::String;
using vx::SystemName;
using vx::TerminatedText;
using vx::util::RegistryKey;
using vxtools::Failure;
using vxtools::Messages;

RegistryKey keyOf(const std::string& path)
{
    try {
        return RegistryKey(fromUtf8(path));
    } catch (const vx::Exception&) {
        throw Failure(path, NO_HIVE());
    }
}

/// Runs `work`. Its failures are reported as those of `what`.
template <class Work>
auto about(const vxtools::Text& what, Work&& work)
{
    try {
        return work();
    } catch (const vx::Exception& failure) {
        throw Failure(what, textOf(failure));
    }
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

void callLibrary(const std::string& name, std::int32_t (*call)(const char16_t*))
{
    const String path = libraryPath(name);
    if (const std::int32_t result = call(TerminatedText(path)); vx::failed(result)) {
        // The result of the library's function is one of the store.
        const std::int32_t loading = VXComCheckLibrary(TerminatedText(path));
        throw Failure(path.toUtf8(), vx::failed(loading) ? textOfLibrary(loading) : textOfStore(result));
    }
}

void registerLibrary(const Arguments& arguments, Messages&)
{
    callLibrary(arguments[0], VXComRegisterLibrary);
}

void unregisterLibrary(const Arguments& arguments, Messages&)
{
    callLibrary(arguments[0], VXComUnregisterLibrary);
}

void resolve(const Arguments& arguments, Messages& messages)
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
    print(messages.say(CLASS_IS(String(identifier).toUtf8())));

    const RegistryKey server(VX_HKEY_CLASSES_32, String(u"CLSID\\") + identifier + u"\\InprocServer32");
    const std::string serverName = server.getKey().toUtf8();
    const String library = about(serverName, [&] { return server.getValueString(String()); });
    print(messages.say(LIBRARY_IS(library.toUtf8())));
    if (const std::int32_t loading = VXComCheckLibrary(SystemName(library)); vx::failed(loading))
        throw Failure(library.toUtf8(), textOfLibrary(loading));
    void* object = nullptr;
    const std::int32_t made = VXModuleComCreateObject(nullptr, &classId, nullptr, &IVXUnknown::IID, &object);
    if (vx::failed(made))
        throw Failure(library.toUtf8(), textOfLibrary(made));
    static_cast<IVXUnknown*>(object)->Release();
    print(messages.say(OBJECT_CREATED()));
}

void writeValues(std::ostream& target, const RegistryKey& key)
{
    const auto names = key.getValueIterator();
    while (names->hasNext()) {
        const String name(*names->next());
        target << lineOfValue(name, readValue(key, name)) << '\n';
    }
}

void list(const Arguments& arguments, Messages&)
{
    if (arguments.empty()) {
        for (std::uint32_t hive = VX_HKEY_CLASSES_32; hive <= VX_HKEY_CONFIG_64; ++hive)
            print(RegistryKey(static_cast<ENUM_VX_HKEY>(hive), String()).getKey().toUtf8());
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

void get(const Arguments& arguments, Messages&)
{
    const RegistryKey key = keyOf(arguments[0]);
    print(about(describe(arguments), [&] { return plainText(readValue(key, nameIn(arguments, 1))); }));
}

void set(const Arguments& arguments, Messages&)
{
    const Value value = parseValue(arguments.size() > 3 ? arguments[3] : "text", arguments[2]);
    const RegistryKey key = keyOf(arguments[0]);
    about(describe(arguments), [&] { writeValue(key, nameIn(arguments, 1), value); });
}

void remove(const Arguments& arguments, Messages&)
{
    const RegistryKey key = keyOf(arguments[0]);
    about(describe(arguments), [&] {
        if (arguments.size() > 1)
            key.deleteValue(nameIn(arguments, 1));
        else
            key.remove();
    });
}

void writeBranch(std::ostream& target, const RegistryKey& key)
{
    target << lineOfKey(key) << '\n';
    writeValues(target, key);
    const auto subkeys = key.getSubkeyIterator();
    while (subkeys->hasNext())
        writeBranch(target, *subkeys->next());
}

void verify(const Arguments& arguments, Messages& messages)
{
    verifyLibraries(arguments, messages);
}

void exportBranch(const Arguments& arguments, Messages&)
{
    const RegistryKey key = keyOf(arguments[0]);
    std::ostringstream text; // so that a failure does not change the file
    about(arguments[0], [&] { writeBranch(text, key); });
    if (arguments.size() < 2 || arguments[1] == "-") {
        std::cout << text.str();
        return;
    }
    std::ofstream file(arguments[1]);
    if (!(file << text.str()) || !file.flush())
        throw Failure(arguments[1], vxtools::textOfError(errno));
}

void importBranch(const Arguments& arguments, Messages&)
{
    const std::string name = arguments.empty() ? "-" : arguments[0];
    std::ifstream file;
    if (name != "-") {
        file.open(name);
        if (!file)
            throw Failure(name, vxtools::textOfError(errno));
    }
    std::vector<Entry> entries;
    try {
        entries = parseEntries(name != "-" ? static_cast<std::istream&>(file) : std::cin);
    } catch (const vxtools::UsageError& failure) {
        throw Failure(name == "-" ? vxtools::STANDARD_INPUT() : vxtools::Text(name), failure.text());
    }
    for (const Entry& entry : entries) {
        about(entry.key.getKey().toUtf8(), [&] {
            if (entry.hasValue)
                writeValue(entry.key, entry.name, entry.value);
            else
                vx::throwIfFailed(VXRegistryCreateKey(entry.key.getVXHKEY(), SystemName(entry.key.getKey(true))));
        });
    }
}

struct Command {
    std::string_view name;
    std::size_t least;
    std::size_t most;
    void (*run)(const Arguments& arguments, Messages& messages);
    bool makesStore = false;
};

constexpr Command COMMANDS[] = {
    {"register", 1, 1, registerLibrary, true},
    {"unregister", 1, 1, unregisterLibrary},
    {"resolve", 1, 1, resolve},
    {"verify", 1, std::numeric_limits<std::size_t>::max(), verify},
    {"list", 0, 1, list},
    {"get", 1, 2, get},
    {"set", 3, 4, set, true},
    {"delete", 1, 2, remove},
    {"export", 1, 2, exportBranch},
    {"import", 0, 1, importBranch, true},
};

/// Makes the commands of this process work on the registry of all users. All of them may read it: the rights of its
/// files follow those of its folder.
void useMachineRegistry(bool isToBeMade)
{
    char place[PATH_MAX];
    vx::throwIfFailed(VXRegistryGetMachinePlace(place, sizeof place));
    if (*place == '\0')
        throw Failure(MACHINE(), NO_MACHINE());
    if (isToBeMade) {
        ::umask(S_IWGRP | S_IWOTH);
        std::error_code error;
        std::filesystem::create_directories(place, error);
        if (error)
            throw Failure(place, vxtools::textOfError(error.value()));
    }
    ::setenv("VXSYS4_REGISTRY", place, 1);
    ::setenv("VXSYS4_MACHINE_REGISTRY", "", 1);
}

} // namespace

std::string usage(const vx::util::OptionTable& options, Messages& messages)
{
    return messages.say(HELP_HEAD) + "\n\n" + vxtools::helpOf(options, u"vxreg.help.", messages) + '\n'
        + messages.say(HELP_FOOT) + '\n';
}

std::vector<std::string_view> commandNames()
{
    std::vector<std::string_view> names;
    for (const Command& command : COMMANDS)
        names.push_back(command.name);
    return names;
}

void run(const std::vector<std::string>& arguments, bool forMachine, Messages& messages)
{
    if (arguments.empty())
        throw vxtools::UsageError(NO_COMMAND());
    for (const Command& command : COMMANDS) {
        if (command.name != arguments[0])
            continue;
        const Arguments rest(arguments.begin() + 1, arguments.end());
        if (rest.size() < command.least || rest.size() > command.most)
            throw vxtools::UsageError(OTHER_ARGUMENTS(arguments[0]));
        if (forMachine)
            useMachineRegistry(command.makesStore);
        command.run(rest, messages);
        return;
    }
    throw vxtools::UsageError(NO_SUCH_COMMAND(arguments[0]));
}

} // namespace vxreg
