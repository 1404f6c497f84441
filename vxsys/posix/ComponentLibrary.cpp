#include "vxsys/posix/ComponentLibrary.h"

#include "vxsys/Registry.h"
#include "vxsys/Result.h"
#include "vxsys/detail/Chain.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/StateLock.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/posix/LibraryFile.h"
#include "vxsys/posix/RegistryChanges.h"

#include <dlfcn.h>
#include <functional>
#include <memory>
#include <new>
#include <string_view>

namespace vxsys::detail {

namespace {

using namespace vxsys::results;
using namespace std::string_view_literals;

constexpr _GUID CLASS_FACTORY {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

/// A class factory as callers in another language see it: a pointer to a table of operations. The first three are those
/// of every interface.
struct Factory {
    struct Operations {
        std::int32_t (*queryInterface)(Factory* self, const _GUID* iid, void** out);
        std::uint32_t (*addRef)(const Factory* self);
        std::uint32_t (*release)(const Factory* self);
        std::int32_t (*createInstance)(const Factory* self, IVXUnknown* outer, const _GUID* iid, void** out);
        std::int32_t (*lockServer)(Factory* self, std::int16_t lock);
    };
    const Operations* operations;
};

constinit StateLock g_lock;

} // namespace

/// A library that this layer has opened. It may have two entries for a short time if two threads have opened it.
struct LoadedLibrary {
    char16_t path[NATIVE_PATH_SIZE];
    VXLibHandle handle;
    VXGetClassObjectFunction getClassObject;
    VXCanUnloadNowFunction canUnloadNow;
    std::uint32_t uses VX_GUARDED_BY(g_lock); ///< calls into it that have not returned
    LoadedLibrary* next;
};

namespace {

/// Where the registry has led to for one key.
struct KnownClass {
    std::uint64_t version; ///< of the registry; 0: unused
    LoadedLibrary* library;
    _GUID classId;
    bool isName;
    std::size_t size;
    char key[128];
};

// Plain pointers and no destructors: objects may be created until the very end of the process.
constinit LoadedLibrary* g_libraries VX_GUARDED_BY(g_lock) = nullptr;
constinit KnownClass g_knownClasses[64] VX_GUARDED_BY(g_lock) {};
constinit RegistryWatch g_watch VX_GUARDED_BY(g_lock);

/// Called when the library is unloaded, and at exit.
__attribute__((destructor)) void closeWatch() noexcept
{
    const StateGuard guard(g_lock);
    g_watch.close();
}

/// The name of a key, composed in place.
class KeyName {
public:
    KeyName& operator<<(std::u16string_view text) noexcept
    {
        m_fits = m_fits && text.size() < SIZE - m_length;
        if (m_fits) {
            text.copy(m_text + m_length, text.size());
            m_length += text.size();
            m_text[m_length] = 0;
        }
        return *this;
    }

    /// Empty, which is the name of no class's key, if the text is too long.
    const char16_t* get() const noexcept { return m_fits ? m_text : u""; }

private:
    static constexpr std::size_t SIZE = 320;

    char16_t m_text[SIZE] = u"";
    std::size_t m_length = 0;
    bool m_fits = true;
};

/// The default value of a key of the classes. A missing value, and one that is not a text, mean that there is no such
/// class.
template <std::size_t SIZE>
std::int32_t readText(const KeyName& key, char16_t (&text)[SIZE]) noexcept
{
    ENUM_VX_REG_TYPE type = VX_REG_BINARY;
    auto length = static_cast<std::int32_t>((SIZE - 1) * sizeof(char16_t));
    const std::int32_t result = VXRegistryGetValue(VX_HKEY_CLASSES_32, key.get(), u"", &type, text, &length);
    if (result == RESULT_NOT_FOUND || result == RESULT_BUFFER_TOO_SMALL || (!failed(result) && type != VX_REG_STRING))
        return RESULT_CLASS_NOT_AVAILABLE;
    text[failed(result) ? 0 : static_cast<std::size_t>(length) / sizeof(char16_t)] = 0;
    return result;
}

template <class Function>
std::int32_t getExport(VXLibHandle library, const char16_t* name, Function& function) noexcept
{
    void* symbol = nullptr;
    const std::int32_t result = VXLibGetSymbol(library, name, &symbol);
    function = reinterpret_cast<Function>(symbol);
    return result == RESULT_OK && symbol == nullptr ? RESULT_SYMBOL_NOT_FOUND : result;
}

/// Removes the first library from `list` that no call is inside; null if there is none.
LoadedLibrary* takeIdle(LoadedLibrary*& list) noexcept VX_REQUIRES(g_lock)
{
    LoadedLibrary* const idle = unlink(
        findPlace(list, [](const LoadedLibrary& library) VX_NO_THREAD_SAFETY_ANALYSIS { return library.uses == 0; }));
    for (KnownClass& known : g_knownClasses) {
        if (idle != nullptr && known.library == idle)
            known = {};
    }
    return idle;
}

} // namespace

LibraryUse::~LibraryUse()
{
    if (m_library == nullptr)
        return;
    const StateGuard guard(g_lock);
    --m_library->uses;
}

std::int32_t LibraryUse::begin(const char16_t* path) noexcept
{
    if (findLoaded(path))
        return RESULT_OK;
    // Without the lock, because static objects of the library may create components. Two threads may load it at the
    // same time.
    VXLibHandle handle;
    if (const std::int32_t result = openTrustedLibrary(path, &handle); failed(result))
        return result;
    const std::int32_t result = add(path, handle);
    if (failed(result))
        VXModuleLibClose(nullptr, handle);
    return result;
}

bool LibraryUse::findLoaded(const char16_t* path) noexcept
{
    const StateGuard guard(g_lock);
    m_library = *findPlace(
        g_libraries, [&](const LoadedLibrary& library) { return std::u16string_view(library.path) == path; });
    if (m_library != nullptr)
        ++m_library->uses;
    return m_library != nullptr;
}

std::int32_t LibraryUse::add(const char16_t* path, VXLibHandle handle) noexcept
{
    VXGetClassObjectFunction getClassObject;
    if (const std::int32_t result = getExport(handle, u"VXGetClassObject", getClassObject); failed(result))
        return result;
    VXCanUnloadNowFunction canUnloadNow;
    if (failed(getExport(handle, u"VXCanUnloadNow", canUnloadNow)))
        canUnloadNow = nullptr; // never unloaded
    auto* library = new (std::nothrow) LoadedLibrary {{}, handle, getClassObject, canUnloadNow, 1, nullptr};
    if (library == nullptr)
        return RESULT_OUT_OF_MEMORY;
    std::u16string_view(path).copy(library->path, NATIVE_PATH_SIZE - 1);
    m_library = library;
    const StateGuard guard(g_lock);
    pushFront(g_libraries, library);
    return RESULT_OK;
}

std::int32_t RegisteredClass::find(const char16_t* progId) noexcept
{
    const std::u16string_view name(progId);
    m_key = {progId, name.size() * sizeof(char16_t), true};
    if (findKnown())
        return RESULT_OK;
    if (name.empty() || name.find_first_of(u"\\/") != name.npos)
        return RESULT_CLASS_NOT_AVAILABLE;
    char16_t text[64];
    const std::int32_t result = readText(KeyName() << name << u"\\CLSID"sv, text);
    if (failed(result))
        return result;
    return failed(VXComGUIDFromString(text, &m_classId)) ? RESULT_CLASS_NOT_AVAILABLE : RESULT_OK;
}

void RegisteredClass::setClass(const _GUID& classId) noexcept
{
    m_classId = classId;
    m_key = {&m_classId, sizeof m_classId, false};
}

std::int32_t RegisteredClass::create(IVXUnknown* outer, const _GUID* iid, void** object)
{
    if (const std::int32_t result = load(); failed(result))
        return result;
    void* factory = nullptr;
    const std::int32_t result
        = callOut([&] { return m_library->getClassObject(&m_classId, &CLASS_FACTORY, &factory); });
    if (failed(result))
        return result;
    if (factory == nullptr)
        return RESULT_NO_INTERFACE;
    const auto release
        = [](Factory* self) { callOut([&] { return static_cast<std::int32_t>(self->operations->release(self)); }); };
    const std::unique_ptr<Factory, decltype(release)> self(static_cast<Factory*>(factory), release);
    return callOut([&] { return self->operations->createInstance(self.get(), outer, iid, object); });
}

/// The entry for a key, which may have that of another one.
static KnownClass& entryOf(std::string_view bytes) noexcept VX_REQUIRES(g_lock)
{
    return g_knownClasses[std::hash<std::string_view>()(bytes) % std::size(g_knownClasses)];
}

bool RegisteredClass::findKnown() noexcept
{
    const std::string_view bytes(static_cast<const char*>(m_key.bytes), m_key.size);
    holdDuringFork<g_lock>();
    const StateGuard guard(g_lock);
    m_version = g_watch.version();
    const KnownClass& known = entryOf(bytes);
    if (m_version == 0 || known.version != m_version || known.isName != m_key.isName
        || bytes != std::string_view(known.key, known.size))
        return false;
    m_classId = known.classId;
    m_library = known.library;
    ++m_library->uses;
    return true;
}

/// Loads the library unless it is known.
std::int32_t RegisteredClass::load() noexcept
{
    if (m_library != nullptr || (!m_key.isName && findKnown()))
        return RESULT_OK;
    char16_t identifier[40];
    VXComStringFromGUID(&m_classId, identifier, std::size(identifier));
    char16_t path[NATIVE_PATH_SIZE];
    const std::int32_t result
        = inOrder([&] { return readText(KeyName() << u"CLSID\\"sv << identifier << u"\\InprocServer32"sv, path); },
            [&] { return begin(path); });
    if (!failed(result))
        keep();
    return result;
}

void RegisteredClass::keep() const noexcept
{
    if (m_version == 0 || m_key.size > sizeof KnownClass::key)
        return;
    const std::string_view bytes(static_cast<const char*>(m_key.bytes), m_key.size);
    const StateGuard guard(g_lock);
    KnownClass& known = entryOf(bytes);
    known = {m_version, m_library, m_classId, m_key.isName, m_key.size, {}};
    bytes.copy(known.key, bytes.size());
}

} // namespace vxsys::detail

using namespace vxsys::results;
using namespace vxsys::detail;

namespace {

/// Loads the library at `path` for one call of `work` with its handle.
template <class Work>
std::int32_t withLibrary(const char16_t* path, Work&& work)
{
    if (path == nullptr)
        return RESULT_INVALID_ARGUMENT;
    VXLibHandle handle;
    if (const std::int32_t result = openTrustedLibrary(path, &handle); failed(result))
        return result;
    const struct Closer {
        ~Closer() { VXModuleLibClose(nullptr, handle); }
        const VXLibHandle handle;
    } closer {handle};
    return work(handle);
}

std::int32_t callExport(const char16_t* path, const char16_t* name)
{
    return withLibrary(path, [&](VXLibHandle handle) {
        std::int32_t (*function)();
        const std::int32_t result = getExport(handle, name, function);
        return failed(result) ? result : callOut(function);
    });
}

/// Whether the library is still loaded, although it was closed.
bool isLoaded(const LoadedLibrary& library) noexcept
{
    Dl_info info;
    return ::dladdr(reinterpret_cast<void*>(library.getClassObject), &info) != 0;
}

/// Libraries that were removed from the shared list, and that the destructor puts back.
struct TakenLibraries {
    ~TakenLibraries()
    {
        const StateGuard guard(g_lock);
        while (LoadedLibrary* library = unlink(&first))
            pushFront(g_libraries, library);
    }

    LoadedLibrary* first = nullptr;
};

struct FreedLibraries {
    std::int32_t gone = 0;
    std::int32_t kept = 0;
};

FreedLibraries freeUnusedLibraries()
{
    TakenLibraries used;
    LoadedLibrary* closed = nullptr;
    const auto next = [&] {
        const StateGuard guard(g_lock);
        return takeIdle(g_libraries);
    };
    // Without the lock, and removed from the shared list: a thread that needs the library meanwhile opens it again.
    while (LoadedLibrary* idle = next()) {
        pushFront(used.first, idle);
        if (idle->canUnloadNow != nullptr && callOut([&] { return idle->canUnloadNow(); }) == RESULT_OK) {
            VXModuleLibClose(nullptr, idle->handle);
            pushFront(closed, unlink(&used.first));
        }
    }
    // After the last close, since a library may have had two entries.
    FreedLibraries freed;
    while (const LoadedLibrary* library = unlink(&closed)) {
        const auto isSame = [&](const LoadedLibrary& other) { return other.getClassObject == library->getClassObject; };
        if (*findPlace(closed, isSame) == nullptr)
            ++(isLoaded(*library) ? freed.kept : freed.gone);
        delete library;
    }
    return freed;
}

} // namespace

std::int32_t VXComFreeUnusedLibraries()
{
    return freeUnusedLibraries().gone;
}

std::int32_t VXComFreeUnusedLibrariesAndCountKept(std::int32_t* kept)
{
    if (kept == nullptr)
        return RESULT_POINTER;
    const FreedLibraries freed = freeUnusedLibraries();
    *kept = freed.kept;
    return freed.gone;
}

std::int32_t VXComRegisterLibrary(const char16_t* path)
{
    return callExport(path, u"VXRegisterServer");
}

std::int32_t VXComUnregisterLibrary(const char16_t* path)
{
    return callExport(path, u"VXUnregisterServer");
}

std::int32_t VXComCheckLibrary(const char16_t* path) noexcept
{
    return withLibrary(path, [](VXLibHandle handle) {
        VXGetClassObjectFunction function;
        return getExport(handle, u"VXGetClassObject", function);
    });
}
