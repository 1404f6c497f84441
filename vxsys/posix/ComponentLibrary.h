#pragma once

#include "vxsys/Component.h"
#include "vxsys/Module.h"
#include "vxsys/Result.h"
#include "vxsys/Thread.h"

#include <cstddef>
#include <cstdint>
#include <new>

/// Classes in shared libraries, found through the registry. A library is loaded when its first object is created, and
/// stays loaded until `VXComFreeUnusedLibraries` finds that it is not in use. Each operation returns a result code.
namespace vxsys::detail {

struct LoadedLibrary;

/// Calls into a library and catches what it throws: the callers of this layer do not expect exceptions.
template <class Call>
std::int32_t callOut(Call&& call)
{
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return results::RESULT_OUT_OF_MEMORY;
    } catch (...) {
        passForcedUnwind();
        return results::RESULT_FAIL;
    }
}

/// Keeps a library loaded to the end of the block.
class [[nodiscard]] LibraryUse {
public:
    LibraryUse() noexcept = default;
    ~LibraryUse();
    LibraryUse(const LibraryUse&) = delete;
    LibraryUse& operator=(const LibraryUse&) = delete;

protected:
    /// Loads the library if needed.
    std::int32_t begin(const char16_t* path) noexcept;

    LoadedLibrary* m_library = nullptr;

private:
    bool findLoaded(const char16_t* path) noexcept;
    std::int32_t add(const char16_t* path, VXLibHandle handle) noexcept;
};

/// A class of the registry for one creation. Where the registry has led to is kept in memory until the registry changes
/// or the library is unloaded.
class [[nodiscard]] RegisteredClass : public LibraryUse {
public:
    /// RESULT_CLASS_NOT_AVAILABLE if the registry has no such class.
    std::int32_t find(const char16_t* progId) noexcept;
    void setClass(const _GUID& classId) noexcept;

    const _GUID& classId() const noexcept { return m_classId; }

    /// Creates an object through the class factory in the library of the class.
    std::int32_t create(IVXUnknown* outer, const _GUID* iid, void** object);

private:
    /// What the caller searches by: the bytes of a ProgID or of a class identifier.
    struct Key {
        const void* bytes;
        std::size_t size;
        bool isName;
    };

    bool findKnown() noexcept;
    void keep() const noexcept;
    std::int32_t load() noexcept;

    Key m_key {};
    _GUID m_classId {};
    std::uint64_t m_version = 0; ///< of the registry, before it was read
};

} // namespace vxsys::detail
