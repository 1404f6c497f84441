#include "vxreg/Verify.h"

#include "common/Failure.h"
#include "vxreg/Classes.h"
#include "vxreg/ElfLibrary.h"
#include "vxreg/Results.h"
#include "vxreg/TextForm.h"
#include "vxreg/Texts.h"
#include "vxreg/Trial.h"

#include <vx/IVXUnknown.h>
#include <vx/Result.h>
#include <vx/TerminatedText.h>
#include <vxsys/Component.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <iostream>
#include <strings.h>
#include <thread>

namespace vxreg {

namespace {

namespace fs = std::filesystem;
using namespace vxtools;
using vx::TerminatedText;

constexpr std::array ENTRY_POINTS {"VXGetClassObject", "VXCanUnloadNow", "VXRegisterServer", "VXUnregisterServer"};
constexpr const char* MACHINE_REGISTRY = "VXSYS4_MACHINE_REGISTRY";

/// A variable that has another value until the end of the block.
class OtherValue {
public:
    OtherValue(const char* name, const std::string& value)
        : m_name(name)
    {
        if (const char* before = std::getenv(name))
            m_before = before;
        ::setenv(name, value.c_str(), 1);
    }
    ~OtherValue()
    {
        if (m_before)
            ::setenv(m_name, m_before->c_str(), 1);
        else
            ::unsetenv(m_name);
    }
    OtherValue(const OtherValue&) = delete;
    OtherValue& operator=(const OtherValue&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_before;
};

/// A folder for the registry of one trial, in memory if that is possible: each change of a registry is flushed to its
/// disk.
class TrialFolder {
public:
    TrialFolder()
    {
        const char* const named = std::getenv("TMPDIR");
        for (const char* place : {"/dev/shm", named != nullptr && *named != '\0' ? named : P_tmpdir}) {
            m_path = (fs::path(place) / "vxreg-XXXXXX").string();
            if (::mkdtemp(m_path.data()) != nullptr)
                return;
        }
        throw Failure(m_path, textOfError(errno));
    }
    ~TrialFolder()
    {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    TrialFolder(const TrialFolder&) = delete;
    TrialFolder& operator=(const TrialFolder&) = delete;

    const std::string& path() const noexcept { return m_path; }

private:
    std::string m_path;
};

/// The registry of the user and that of all users, until the end of the block.
class TrialRegistry {
public:
    explicit TrialRegistry(const std::string& folder)
        : m_user("VXSYS4_REGISTRY", folder + "/registry")
        , m_machine(MACHINE_REGISTRY, "")
    {
    }

private:
    OtherValue m_user;
    OtherValue m_machine;
};

void checkNames(Trial& trial, const Classes& classes)
{
    for (const auto& [name, id] : classes.classOf) {
        const auto own = classes.namesOf.find(id);
        if (own != classes.namesOf.end()
            && std::find(own->second.begin(), own->second.end(), name) == own->second.end())
            trial.tell(SAME_CLASS(name, own->second.front(), id));
    }
    for (const auto& [id, names] : classes.namesOf) {
        for (const std::string& name : names) {
            if (const auto other = classes.classOf.find(name); other != classes.classOf.end() && other->second != id)
                trial.tell(SAME_NAME(name, other->second, id));
        }
    }
}

/// The library that a class is registered for. Empty if there is none, if it is `path`, or if its file is gone.
std::string otherLibrary(const std::string& id, const std::string& path)
{
    const std::string library = textOfClassKey("CLSID\\" + id + "\\InprocServer32");
    std::error_code ignored;
    const bool isOther = fs::status(library, ignored).type() != fs::file_type::not_found && !isSameFile(library, path);
    return isOther ? library : std::string();
}

/// Compares with what is registered.
void checkRegistry(Trial& trial, const Classes& classes, const std::string& path)
{
    for (const auto& entry : classes.libraryOf) {
        if (const std::string other = otherLibrary(entry.first, path); !other.empty())
            trial.tell(CLASS_IN_USE(entry.first, other));
    }
    for (const auto& [name, id] : classes.classOf) {
        const std::string other = textOfClassKey(name + "\\CLSID");
        if (::strcasecmp(other.c_str(), id.c_str()) != 0 && !otherLibrary(other, path).empty())
            trial.tell(NAME_IN_USE(name, other));
    }
}

enum class Purpose { VERIFICATION, REGISTRATION };

/// A library may be registered before its objects have what they need, such as files. A class that it does not have can
/// never be created.
void createObjects(Trial& trial, const Classes& classes, Purpose purpose)
{
    for (const auto& [id, library] : classes.libraryOf) {
        if (library.empty()) {
            trial.tell(NO_PATH(id));
            continue;
        }
        trial.enter(WHILE_CREATED(id));
        const auto names = classes.namesOf.find(id);
        _GUID classId;
        void* object = nullptr;
        std::int32_t result = VXComGUIDFromString(TerminatedText(fromUtf8(id)), &classId);
        if (!vx::failed(result))
            result = VXModuleComCreateObject(nullptr, &classId, nullptr, &IVXUnknown::IID, &object);
        if (purpose == Purpose::REGISTRATION ? result == vx::RESULT_CLASS_NOT_AVAILABLE : vx::failed(result))
            trial.tell(
                NO_OBJECT(id, names != classes.namesOf.end() ? names->second.front() : "", textOfLibrary(result)));
        if (object != nullptr)
            static_cast<IVXUnknown*>(object)->Release();
    }
}

std::size_t countThreads()
{
    std::error_code ignored;
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/task", ignored), {}));
}

void unload(Trial& trial, const std::string& path, std::size_t threads)
{
    trial.enter(WHILE_UNLOADED());
    std::int32_t kept = 0;
    VXComFreeUnusedLibrariesAndCountKept(&kept);
    if (void* still = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
        ::dlclose(still);
        trial.tell(kept > 0 ? STAYS_LOADED() : SAYS_IN_USE());
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1); // for threads that are just ending
    while (countThreads() > threads && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    if (countThreads() > threads)
        trial.tell(THREAD_LEFT());
}

/// False if the library cannot be loaded, or is no component library.
bool load(Trial& trial, const std::string& path)
{
    trial.enter(WHILE_LOADED());
    const std::int32_t result = VXComCheckLibrary(TerminatedText(fromUtf8(path)));
    if (vx::failed(result) && result != vx::RESULT_MODULE_NOT_FOUND && result != vx::RESULT_SYMBOL_NOT_FOUND) {
        trial.tell(textOfLibrary(result));
        return false;
    }
    void* const handle = ::dlopen(path.c_str(), RTLD_NOW); // also finds functions that no library has
    if (handle == nullptr) {
        trial.tell(CANNOT_LOAD(::dlerror()));
        return false;
    }
    ::dlclose(handle);
    if (vx::failed(result))
        trial.tell(result == vx::RESULT_SYMBOL_NOT_FOUND ? NOT_EXPORTED(ENTRY_POINTS[0]) : textOfLibrary(result));
    return !vx::failed(result);
}

/// Registers the library and creates its objects.
Classes tryClasses(Trial& trial, const std::string& path, Purpose purpose)
{
    trial.enter(WHILE_REGISTERED());
    const std::int32_t result = VXComRegisterLibrary(TerminatedText(fromUtf8(path)));
    if (result == vx::RESULT_SYMBOL_NOT_FOUND)
        trial.tell(NOT_EXPORTED("VXRegisterServer"));
    else if (vx::failed(result))
        trial.tell(NO_REGISTRATION(textOfStore(result)));
    Classes classes = readClasses();
    if (classes.libraryOf.empty())
        trial.tell(NO_CLASS());
    checkNames(trial, classes);
    createObjects(trial, classes, purpose);
    return classes;
}

/// In the child process.
void tryLibrary(Trial& trial, const std::string& path, const std::string& folder)
{
    const std::size_t threads = countThreads();
    if (!load(trial, path))
        return;
    Classes classes;
    {
        const TrialRegistry registry(folder);
        classes = tryClasses(trial, path, Purpose::VERIFICATION);
        trial.enter(WHILE_UNREGISTERED());
        VXComUnregisterLibrary(TerminatedText(fromUtf8(path))); // what it leaves is told below
        for (const auto& [id, library] : readClasses().libraryOf)
            trial.tell(LEAVES_KEY(id));
        for (const auto& [name, id] : readClasses().classOf)
            trial.tell(LEAVES_KEY(name));
    }
    checkRegistry(trial, classes, path);
    unload(trial, path, threads);
}

/// In the child process. What the user registers may replace what all users have.
void tryToRegister(Trial& trial, const std::string& path, const std::string& folder)
{
    if (!load(trial, path))
        return;
    Classes classes;
    {
        const TrialRegistry registry(folder);
        classes = tryClasses(trial, path, Purpose::REGISTRATION);
    }
    const OtherValue machine(MACHINE_REGISTRY, "");
    checkRegistry(trial, classes, path);
}

/// The problems that the file shows. `hint` is set if something could be better.
std::vector<std::string> checkFile(const std::string& path, Messages& messages, std::string& hint)
{
    const ElfLibrary library = readElfLibrary(path);
    std::vector<std::string> problems;
    for (const char* name : ENTRY_POINTS) {
        if (std::find(library.exported.begin(), library.exported.end(), name) == library.exported.end())
            problems.push_back(messages.say(NOT_EXPORTED(name)));
    }
    if (!library.unique.empty())
        problems.push_back(messages.say(UNIQUE_SYMBOLS(library.unique.size(), library.unique.front())));
    const auto isMore = [](const std::string& name) {
        return std::find(ENTRY_POINTS.begin(), ENTRY_POINTS.end(), name) == ENTRY_POINTS.end();
    };
    if (const auto count = std::count_if(library.exported.begin(), library.exported.end(), isMore); count > 0)
        hint = messages.say(
            MORE_EXPORTED(count, *std::find_if(library.exported.begin(), library.exported.end(), isMore)));
    return problems;
}

bool verify(const std::string& path, Messages& messages)
{
    std::vector<std::string> problems;
    std::string hint;
    try {
        problems = checkFile(path, messages, hint);
    } catch (const Failure& failure) {
        std::cout << messages.say(failure.text()) << '\n';
        return false;
    }
    const TrialFolder folder;
    for (const std::string& problem :
        Trial::run(messages, [&](Trial& trial) { tryLibrary(trial, path, folder.path()); })) {
        if (std::ranges::find(problems, problem) == problems.end()) // the file may already show it
            problems.push_back(problem);
    }
    for (const std::string& problem : problems)
        std::cout << path << ": " << problem << '\n';
    if (problems.empty())
        std::cout << path << ": " << messages.say(NO_PROBLEM()) << '\n';
    if (!hint.empty())
        std::cout << path << ": " << hint << '\n';
    return problems.empty();
}

} // namespace

void verifyLibraries(const std::vector<std::string>& names, Messages& messages)
{
    std::size_t bad = 0;
    for (const std::string& name : names) {
        std::error_code ignored; // reading the file reports what is wrong with the path
        bad += !verify(fs::absolute(name, ignored).lexically_normal().string(), messages);
    }
    if (bad > 0)
        throw Failure(LIBRARIES(), HAVE_PROBLEMS(bad, names.size()));
}

void requireRegistrable(const std::string& path, Messages& messages)
{
    const TrialFolder folder;
    const std::vector<std::string> problems
        = Trial::run(messages, [&](Trial& trial) { tryToRegister(trial, path, folder.path()); });
    if (!problems.empty())
        throw Failure(path, problems.front());
}

} // namespace vxreg
