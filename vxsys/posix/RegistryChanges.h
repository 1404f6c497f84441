#pragma once

#include "vxsys/detail/Descriptor.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

/// The count of the changes of a store. It is in a file of the store, which the processes share as memory, so that a
/// reader sees a change of another process without a call of the system.
namespace vxsys::detail {

using ChangeCount = std::atomic<std::uint64_t>;
static_assert(ChangeCount::is_always_lock_free, "processes share it");

/// Keeps the count odd during a change. If the process is killed meanwhile, it stays odd until the next change.
class [[nodiscard]] ChangeMark {
public:
    ChangeMark() noexcept = default;
    ~ChangeMark();
    ChangeMark(const ChangeMark&) = delete;
    ChangeMark& operator=(const ChangeMark&) = delete;

    /// Creates the file in the folder of the store if needed, with the rights `mode`. Returns a result code. Without
    /// an effect on a file system that has no shared memory, where no process can read the count either.
    std::int32_t begin(int folder, mode_t mode) noexcept;

private:
    ChangeCount* m_count = nullptr;
};

/// The count of one store, mapped for reading.
class MappedCount {
public:
    constexpr MappedCount() noexcept = default;
    MappedCount(const MappedCount&) = delete;
    MappedCount& operator=(const MappedCount&) = delete;

    /// Maps the count of the store at `place`. False if it cannot be read, although there is a store.
    bool renew(const std::string& place);
    void close() noexcept;

    bool isMapped() const noexcept { return m_count != nullptr; }
    /// Odd during a change. While there is no store, the count of stores that this process has made is used instead.
    std::uint64_t value() const noexcept;

private:
    const ChangeCount* m_count = nullptr;
    dev_t m_device = 0;
    ino_t m_number = 0;
};

/// Looks for changes of the two present stores, the user's and that of all users. Its owner locks it.
class RegistryWatch {
public:
    constexpr RegistryWatch() noexcept = default;
    RegistryWatch(const RegistryWatch&) = delete;
    RegistryWatch& operator=(const RegistryWatch&) = delete;

    /// The version of the stores: between two calls with the same one, no process has changed them through this library,
    /// and they are the same stores. A change of their files by other means, another process that makes the second
    /// store, and another place for the store of all users give a new version within some milliseconds. 0 if there is no
    /// store, if one is being changed, or if a count cannot be read.
    std::uint64_t version() noexcept;

    /// Returns what it holds. A later call of `version` begins anew.
    void close() noexcept;

    /// Tells all watches of this process that it has made a store.
    static void noteNewStore() noexcept;

private:
    static constexpr std::size_t PLACE_SIZE = 1024;

    bool isSamePlace() const;
    bool renew();

    MappedCount m_user;
    MappedCount m_machine;
    std::uint64_t m_lastUser = 0;
    std::uint64_t m_lastMachine = 0;
    std::uint64_t m_version = 0;
    std::int64_t m_period = -1;
    char m_place[PLACE_SIZE] = "";
};

} // namespace vxsys::detail
