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
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <iostream>
#include <thread>

namespace vxreg {

namespace {

namespace fs = std::filesystem;
using namespace vxtools;
using vx::TerminatedText;

constexpr std::array ENTRY_POINTS {"VXGetClassObject", "VXCanUnloadNow", "VXRegisterServer", "VXUnregisterServer"};

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

/// A folder for the registry of one trial.
class TrialFolder {
public:
    TrialFolder()
        : m_path((fs::temp_directory_path() / "vxreg-XXXXXX").string())
    {
        if (::mkdtemp(m_path.data()) == nullptr)
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

/// Compares with what is registered for the user and for all users.
void checkRegistry(Trial& trial, const Classes& classes, const std::string& path)
{
    for (const auto& entry : classes.libraryOf) {
        const std::string other = textOfClassKey("CLSID\\" + entry.first + "\\InprocServer32");
        std::error_code ignored;
        if (!other.empty() && other != path && !fs::equivalent(other, path, ignored))
            trial.tell(CLASS_IN_USE(entry.first, other));
    }
    for (const auto& [name, id] : classes.classOf) {
        if (const std::string other = textOfClassKey(name + "\\CLSID"); !other.empty() && other != id)
            trial.tell(NAME_IN_USE(name, other));
    }
}

void createObjects(Trial& trial, const Classes& classes)
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
        if (vx::failed(result))
            trial.tell(
                NO_OBJECT(id, names != classes.namesOf.end() ? names->second.front() : "", textOfLibrary(result)));
        else
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

/// In the child process.
void tryLibrary(Trial& trial, const std::string& path, const std::string& folder)
{
    const std::size_t threads = countThreads();
    const TerminatedText text(fromUtf8(path));
    trial.enter(WHILE_LOADED());
    const std::int32_t loading = VXComCheckLibrary(text);
    if (loading == vx::RESULT_ACCESS_DENIED)
        return trial.tell(textOfLibrary(loading));
    void* const handle = ::dlopen(path.c_str(), RTLD_NOW); // also finds functions that no library has
    if (handle == nullptr)
        return trial.tell(CANNOT_LOAD(::dlerror()));
    ::dlclose(handle);
    if (vx::failed(loading))
        return trial.tell(textOfLibrary(loading));

    Classes classes;
    {
        const OtherValue registry("VXSYS4_REGISTRY", folder + "/registry");
        const OtherValue machine("VXSYS4_MACHINE_REGISTRY", "");
        trial.enter(WHILE_REGISTERED());
        if (const std::int32_t result = VXComRegisterLibrary(text); vx::failed(result))
            trial.tell(NO_REGISTRATION(textOfStore(result)));
        classes = readClasses();
        if (classes.libraryOf.empty())
            trial.tell(NO_CLASS());
        checkNames(trial, classes);
        createObjects(trial, classes);
        trial.enter(WHILE_UNREGISTERED());
        VXComUnregisterLibrary(text); // what it leaves is told below
        for (const auto& [id, library] : readClasses().libraryOf)
            trial.tell(LEAVES_KEY(id));
        for (const auto& [name, id] : readClasses().classOf)
            trial.tell(LEAVES_KEY(name));
    }
    checkRegistry(trial, classes, path);
    unload(trial, path, threads);
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
        Trial::run(messages, [&](Trial& trial) { tryLibrary(trial, path, folder.path()); }))
        problems.push_back(problem);
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

} // namespace vxreg
