#pragma once

#include "vxsys/ThreadAnnotations.h"
#include "vxsys/detail/Deadline.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/linux/NamedFolder.h"
#include "vxsys/linux/SharedPage.h"

#include <atomic>
#include <cstdint>
#include <unistd.h>

namespace vxsys::detail {

/// How a named object is opened.
struct NamedOpening {
    enum Kind : char { SEMAPHORE = 's', MEMORY = 'm' };

    Kind kind = SEMAPHORE;
    /// The initial count of a semaphore.
    std::uint32_t value = 0;
    /// The size in bytes of the memory after the page.
    std::uint64_t size = 0;
    bool mayMake = true;
    bool mustMake = false;
};

/// A named object that this process has open: one for each name, with any number of handles. It keeps no descriptor
/// open, so a program that closes all descriptors that it does not know does no harm.
///
/// The process is one opener of the shared page. A child process by `fork` becomes another one at once. Each operation
/// returns a native error or 0.
class NamedObject {
public:
    /// Where the memory after the page starts in the file: at a multiple of the page size of any processor.
    static constexpr std::size_t MEMORY_OFFSET = (sizeof(SharedPage) / 0x10000 + 1) * 0x10000;

    /// Finds or creates the object and adds a use. ENOENT or EEXIST if `opening` requires that, EINVAL if it asks for
    /// more memory than an existing object has.
    static int open(const char* name, const NamedOpening& opening, NamedObject** object) noexcept
        VX_REQUIRES(g_namedLock);
    void use() noexcept VX_REQUIRES(g_namedLock) { ++m_uses; }
    /// Ends one use. If it is the last one and threads wait, returns EBUSY and changes nothing.
    int release() noexcept VX_REQUIRES(g_namedLock);

    int take(const Deadline& deadline) noexcept;
    int post() noexcept;
    int value(std::int32_t& count) noexcept;
    /// EACCES for a process that does not hold the semaphore.
    int setNote(const VXNamedSemNote& note) noexcept;
    int note(VXNamedSemNote& note) noexcept;

    std::uint64_t size() noexcept;
    /// A new mapping of the memory after the page. ESTALE in a forked child if the last owner of the object had ended
    /// before.
    int mapMemory(int protection, void** address) noexcept;

private:
    NamedObject(const ObjectName& file, const NamedOpening& opening) noexcept
        : m_file(file)
        , m_user(::geteuid())
        , m_opening(opening)
    {
    }
    ~NamedObject() { unmap(); }

    static void handleForks() noexcept;
    static void beforeFork() noexcept VX_ACQUIRE(g_namedLock);
    static void inParent() noexcept VX_RELEASE(g_namedLock);
    static void inChild() noexcept VX_RELEASE(g_namedLock);
    static NamedObject* find(const char* fileName) noexcept VX_REQUIRES(g_namedLock);

    /// Makes the process an opener of the object that has the name now, and creates it if necessary.
    int enter() noexcept VX_REQUIRES(g_namedLock);
    int enterFile(const NamedFolder& folder, bool* isAbandoned) noexcept VX_REQUIRES(g_namedLock);
    int map(int file, bool* isNew) noexcept;
    void unmap() noexcept;

    // A `file` of -1 is opened if it is needed.
    int join(const NamedOpening& opening) const noexcept VX_REQUIRES(*m_page);
    int start(int file) noexcept VX_REQUIRES(*m_page);
    int takePlace(int file) noexcept VX_REQUIRES(*m_page);
    int addPlaces(int file) noexcept VX_REQUIRES(*m_page);
    void removeFile(const NamedFolder& folder) noexcept VX_REQUIRES(*m_page);

    const char* fileName() const noexcept { return m_file.get(); }
    int openFile(Descriptor& file) const noexcept;
    int ready() noexcept { return m_isStale.load(std::memory_order_acquire) ? enterAgain() : 0; }
    int enterAgain() noexcept;
    void enterInChild(bool isElsewhere) noexcept VX_REQUIRES(g_namedLock);

    const ObjectName m_file;
    const uid_t m_user; ///< the user of the process when it opened this
    NamedOpening m_opening;
    SharedPage* m_page = nullptr;
    Opener* m_opener = nullptr;
    std::uint64_t m_volume = 0;
    std::uint64_t m_number = 0;
    std::uint32_t m_uses VX_GUARDED_BY(g_namedLock) = 1;
    /// In a child process: the last owner of the object had ended before the child became one, or the child has another
    /// namespace of process numbers.
    std::atomic<bool> m_isStale {false};
    NamedObject* m_next VX_GUARDED_BY(g_namedLock) = nullptr;
    char m_path[NamedFolder::PATH_SIZE] = "";
};

} // namespace vxsys::detail
