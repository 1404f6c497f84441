#include "vxsys/posix/NamedObject.h"

#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/FolderEntries.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/SignalShield.h"
#include "vxsys/detail/Steps.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vxsys::detail {

namespace {

/// A new file has this size and grows in steps of it: a page of the system for either part.
constexpr std::uint32_t FIRST_PLACES = (4096 - SharedPage::sizeFor(0)) / sizeof(Opener);
constexpr std::uint32_t MORE_PLACES = 4096 / sizeof(Opener);

// Plain pointers and no destructors: a static object of the program may close a named object after the library's
// destructors have run.
constinit NamedObject* g_objects VX_GUARDED_BY(g_namedLock) = nullptr;
constinit ProcessIdentity g_self; // does not change while an object is open
constinit std::uint64_t g_namespace VX_GUARDED_BY(g_namedLock) = 0; ///< of the process numbers
constinit long g_tidied VX_GUARDED_BY(g_namedLock) = 0; ///< the place in the folder up to which `tidy` has looked

Descriptor openAt(const NamedFolder& folder, const char* name, int flags) noexcept
{
    constexpr mode_t OWNER_ONLY = 0600;
    return Descriptor(retryOnSignal(
        [&] { return ::openat(folder.descriptor(), name, O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, OWNER_ONLY); }));
}

/// Allocates room in the file, because a store to a page without memory would end the process. Exceeding the size limit
/// of files is a failure here, not a signal that ends the process.
int allocate(int file, std::uint64_t start, std::uint64_t length) noexcept
{
    const SignalShield shield(SIGXFSZ);
    int error;
    do
        error = ::posix_fallocate(file, static_cast<off_t>(start), static_cast<off_t>(length));
    while (error == EINTR);
    return error;
}

SharedPage* mapPage(int file) noexcept
{
    void* address = ::mmap(nullptr, sizeof(SharedPage), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    return address != MAP_FAILED ? static_cast<SharedPage*>(address) : nullptr;
}

void unmapPage(SharedPage* page) noexcept
{
    ::munmap(page, sizeof(SharedPage));
}

/// Whether the file is as large as its page says. A child process may add places at any time, so the size is read after
/// their number.
bool isWhole(const SharedPage& page, int file) noexcept
{
    const std::uint32_t places = page.places();
    struct stat status;
    return page.isOurs() && places <= SharedPage::CAPACITY && ::fstat(file, &status) == 0
        && static_cast<std::uint64_t>(status.st_size) >= SharedPage::sizeFor(places);
}

/// Removes the file of an object that no process has open, unless a note says that something has to be repaired.
void removeIfAbandoned(const NamedFolder& folder, const char* name) noexcept
{
    const Descriptor file = openAt(folder, name, O_NONBLOCK);
    struct stat status;
    if (file.get() == -1 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return;
    if (static_cast<std::uint64_t>(status.st_size) < SharedPage::sizeFor(FIRST_PLACES)) { // its creator was killed
        ::unlinkat(folder.descriptor(), name, 0);
        return;
    }
    SharedPage* const page = mapPage(file.get());
    if (page == nullptr)
        return;
    if (!page->isMade()) {
        ::unlinkat(folder.descriptor(), name, 0);
    } else if (isWhole(*page, file.get())) {
        const PageLock lock(*page);
        if (!page->hasOpener(g_self) && !page->hasNote()) {
            page->setRemoved();
            ::unlinkat(folder.descriptor(), name, 0);
        }
    }
    unmapPage(page);
}

/// Removes files whose last users were killed. Each call looks at some of the folder's files and the next call at those after
/// them, so that an opening takes little time in a folder with many files.
void removeSomeAbandoned(const NamedFolder& folder) noexcept VX_REQUIRES(g_namedLock)
{
    constexpr int MOST_LOOKS = 32;

    FolderEntries entries(folder.descriptor());
    if (!entries.isOpen())
        return;
    if (g_tidied != 0)
        entries.setPosition(g_tidied);
    g_tidied = 0;
    for (int looks = 0; looks < MOST_LOOKS; ++looks) {
        const char* const name = entries.next();
        if (name == nullptr)
            return;
        if (*name != '.')
            removeIfAbandoned(folder, name);
    }
    g_tidied = entries.position();
}

} // namespace

int NamedObject::open(const char* name, const NamedOpening& opening, NamedObject** object) noexcept
{
    handleForks();
    if (g_self.id == 0) {
        g_self = ProcessIdentity::ofCaller();
        g_namespace = processNamespace();
    }

    const ObjectName file(opening.kind, name);
    if (NamedObject* known = find(file.get())) {
        if (known->m_isStale.load(std::memory_order_relaxed)) {
            if (const int error = known->enter())
                return error;
        }
        {
            const PageLock lock(*known->m_page);
            if (const int error = known->join(opening))
                return error;
        }
        known->use();
        *object = known;
        return 0;
    }

    auto* created = new (std::nothrow) NamedObject(file, opening);
    if (created == nullptr)
        return ENOMEM;
    if (const int error = created->enter()) {
        delete created;
        return error;
    }
    created->m_next = std::exchange(g_objects, created);
    *object = created;
    return 0;
}

int NamedObject::release() noexcept
{
    if (m_uses > 1) {
        --m_uses;
        return 0;
    }
    if (!m_isStale.load(std::memory_order_relaxed)) {
        NamedFolder folder;
        // A process that has changed its user since cannot access the folder. The next opener removes the file.
        const bool mayRemove = m_user == ::geteuid() && folder.open() == 0;
        const PageLock lock(*m_page);
        if (m_opener->waiting > 0)
            return EBUSY;
        m_page->leave(*m_opener);
        if (mayRemove && !m_page->hasOpener(g_self))
            removeFile(folder);
    }
    NamedObject** place = &g_objects;
    while (*place != this)
        place = &(*place)->m_next;
    *place = m_next;
    delete this;
    return 0;
}

int NamedObject::take(const Deadline& deadline) noexcept
{
    if (const int error = ready())
        return error;
    const PageLock lock(*m_page);
    return m_page->take(*m_opener, deadline, g_self);
}

int NamedObject::post() noexcept
{
    if (const int error = ready())
        return error;
    const PageLock lock(*m_page);
    return m_page->post(*m_opener);
}

int NamedObject::value(std::int32_t& count) noexcept
{
    if (const int error = ready())
        return error;
    const PageLock lock(*m_page);
    count = m_page->value(g_self);
    return 0;
}

int NamedObject::setNote(const VXNamedSemNote& note) noexcept
{
    if (const int error = ready())
        return error;
    const PageLock lock(*m_page);
    if (m_opener->held.load(std::memory_order_relaxed) == 0)
        return EACCES;
    m_page->setNote(note);
    return 0;
}

int NamedObject::note(VXNamedSemNote& note) noexcept
{
    if (const int error = ready())
        return error;
    const PageLock lock(*m_page);
    if (m_opener->held.load(std::memory_order_relaxed) == 0)
        return EACCES;
    m_page->getNote(note);
    return 0;
}

std::uint64_t NamedObject::size() noexcept
{
    const PageLock lock(*m_page);
    return m_page->size();
}

int NamedObject::mapMemory(int protection, void** address) noexcept
{
    Descriptor file;
    if (const int error = inOrder([&] { return ready(); }, [&] { return openFile(file); }))
        return error;
    void* const mapped = ::mmap(nullptr, size(), protection, MAP_SHARED, file.get(), MEMORY_OFFSET);
    if (mapped == MAP_FAILED)
        return errno;
    *address = mapped;
    return 0;
}

void NamedObject::handleForks() noexcept
{
    static constinit std::atomic<bool> s_handlesForks = false;
    detail::handleForks(s_handlesForks, beforeFork, inParent, inChild);
}

void NamedObject::beforeFork() noexcept
{
    g_namedLock.lock();
}

void NamedObject::inParent() noexcept
{
    g_namedLock.unlock();
}

void NamedObject::inChild() noexcept
{
    g_self = g_objects != nullptr ? ProcessIdentity::ofCaller() : ProcessIdentity {};
    // In another namespace the parent's process would look as if it had ended, and what it holds would be returned.
    const std::uint64_t before = g_namespace;
    g_namespace = g_objects != nullptr ? processNamespace() : 0;
    const bool isElsewhere = g_namespace != before;
    for (NamedObject* object = g_objects; object != nullptr; object = object->m_next)
        object->enterInChild(isElsewhere);
    NamedFolder::forget();
    g_namedLock.unlock();
}

NamedObject* NamedObject::find(const char* fileName) noexcept
{
    const uid_t user = ::geteuid();
    NamedObject* object = g_objects;
    // Memory whose name was removed can be used through its open handles, but no other process finds it.
    while (object != nullptr
        && (object->m_user != user || std::strcmp(object->fileName(), fileName) != 0
            || (object->m_opening.kind == NamedOpening::MEMORY && object->m_isStale.load(std::memory_order_relaxed))))
        object = object->m_next;
    return object;
}

int NamedObject::enter() noexcept
{
    NamedFolder folder;
    if (const int error = folder.open()) {
        unmap();
        return error;
    }
    folder.writePath(fileName(), m_path);
    for (bool isAbandoned = true; isAbandoned;) {
        unmap();
        isAbandoned = false;
        if (const int error = enterFile(folder, &isAbandoned)) {
            unmap();
            return error;
        }
    }
    m_isStale.store(false, std::memory_order_release);
    return 0;
}

int NamedObject::enterFile(const NamedFolder& folder, bool* isAbandoned) noexcept
{
    const Descriptor file = openAt(folder, fileName(), O_CREAT | O_NONBLOCK);
    if (file.get() == -1)
        return errno;
    bool isNew = false;
    if (const int error = map(file.get(), &isNew)) {
        removeIfAbandoned(folder, fileName());
        return error;
    }
    {
        const PageLock lock(*m_page);
        const bool hasOpener = m_page->hasOpener(g_self);
        if (!hasOpener && m_opening.kind == NamedOpening::MEMORY && !isNew) {
            // A process that is no opener may still use the old memory: a child process of one that was killed.
            removeFile(folder);
            *isAbandoned = true;
            return 0;
        }
        int error = hasOpener ? join(m_opening) : start(file.get());
        if (error == 0)
            error = takePlace(file.get());
        if (error != 0) {
            if (!m_page->hasOpener(g_self))
                removeFile(folder);
            return error;
        }
    }
    removeSomeAbandoned(folder);
    return 0;
}

int NamedObject::map(int file, bool* isNew) noexcept
{
    constexpr mode_t OWNER_ONLY = 0600;

    struct stat status;
    if (::fstat(file, &status) != 0)
        return errno;
    if (!S_ISREG(status.st_mode))
        return EUCLEAN;
    if ((status.st_mode & OWNER_ONLY) != OWNER_ONLY) // the process's mask has removed it
        ::fchmod(file, OWNER_ONLY);
    m_volume = status.st_dev;
    m_number = status.st_ino;
    if (static_cast<std::uint64_t>(status.st_size) < SharedPage::sizeFor(FIRST_PLACES)) {
        if (const int error = allocate(file, 0, SharedPage::sizeFor(FIRST_PLACES)))
            return error;
    }
    m_page = mapPage(file);
    if (m_page == nullptr)
        return errno;
    *isNew = !m_page->isMade();
    if (*isNew)
        return m_page->make(FIRST_PLACES);
    return isWhole(*m_page, file) ? 0 : EUCLEAN;
}

void NamedObject::unmap() noexcept
{
    if (m_page != nullptr)
        unmapPage(std::exchange(m_page, nullptr));
    m_opener = nullptr;
}

int NamedObject::join(const NamedOpening& opening) const noexcept
{
    if (opening.mustMake)
        return EEXIST;
    return opening.size > m_page->size() ? EINVAL : 0;
}

int NamedObject::start(int file) noexcept
{
    if (!m_opening.mayMake)
        return ENOENT;
    if (m_opening.kind == NamedOpening::MEMORY) {
        if (m_opening.size == 0)
            return EINVAL;
        if (const int error = allocate(file, MEMORY_OFFSET, m_opening.size))
            return error;
    }
    m_page->start(m_opening.value, m_opening.size);
    return 0;
}

int NamedObject::takePlace(int file) noexcept
{
    m_opener = m_page->enter(g_self);
    if (m_opener != nullptr)
        return 0;
    m_page->dropEnded(g_self);
    m_opener = m_page->enter(g_self);
    if (m_opener != nullptr)
        return 0;
    if (const int error = addPlaces(file))
        return error;
    m_opener = m_page->enter(g_self);
    return 0;
}

int NamedObject::addPlaces(int file) noexcept
{
    const std::uint32_t places = m_page->places() + MORE_PLACES;
    if (places > SharedPage::CAPACITY)
        return ENFILE;
    Descriptor opened;
    if (file == -1) {
        if (const int error = openFile(opened))
            return error;
        file = opened.get();
    }
    if (const int error = allocate(file, 0, SharedPage::sizeFor(places)))
        return error;
    m_page->setPlaces(places);
    return 0;
}

void NamedObject::removeFile(const NamedFolder& folder) noexcept
{
    struct stat status;
    if (m_page->hasNote())
        return; // there is something to repair for the next opener
    m_page->setRemoved();
    if (::fstatat(folder.descriptor(), fileName(), &status, AT_SYMLINK_NOFOLLOW) == 0 && status.st_dev == m_volume
        && status.st_ino == m_number) // another program may have removed the file, and a process created it again
        ::unlinkat(folder.descriptor(), fileName(), 0);
}

int NamedObject::openFile(Descriptor& file) const noexcept
{
    file.reset(retryOnSignal([&] { return ::open(m_path, O_RDWR | O_CLOEXEC | O_NOFOLLOW); }));
    if (!file.isOpen())
        return errno;
    struct stat status;
    const bool isSame = ::fstat(file.get(), &status) == 0 && status.st_dev == m_volume && status.st_ino == m_number;
    return isSame ? 0 : ESTALE;
}

int NamedObject::enterAgain() noexcept
{
    const StateGuard guard(g_namedLock);
    if (!m_isStale.load(std::memory_order_relaxed))
        return 0;
    return m_opening.kind == NamedOpening::MEMORY ? ESTALE : enter();
}

void NamedObject::enterInChild(bool isElsewhere) noexcept
{
    m_opener = nullptr;
    if (isElsewhere)
        m_isStale.store(true, std::memory_order_relaxed);
    if (m_isStale.load(std::memory_order_relaxed))
        return;
    const PageLock lock(*m_page);
    if (m_page->isRemoved() || takePlace(-1) != 0)
        m_isStale.store(true, std::memory_order_relaxed);
}

} // namespace vxsys::detail
