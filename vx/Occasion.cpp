#include "vx/Occasion.h"

#include "vx/detail/Occasions.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace vx {

namespace {

/// A note. It stays in its list for ever, so the list can be read without a lock, even in a child process that was
/// forked while another thread wrote a note. The number of notes in a list is the largest number that its exceptions had at
/// one time.
struct Note {
    std::u16string_view view() const noexcept { return {text, length}; }

    std::atomic<const void*> owner = nullptr; ///< the exception; null while the note is free
    char16_t* text = nullptr; ///< only the thread that claimed the note changes this, its length and the cause
    std::size_t length = 0;
    std::int32_t cause = 0; ///< 0 if the note has the text
    std::atomic<Note*> next = nullptr;
};

constexpr int LIST_BITS = 8;

constexpr std::size_t FIRST_NOTES = 4; ///< of two exceptions that each have two

/// The lists of notes, by the address of the exception: many exceptions that are kept must not slow down all others. The
/// first notes of each list are adjacent here and need no allocation. The `next` of the last of them continues the list.
constinit std::array<Note, FIRST_NOTES << LIST_BITS> g_lists {};

Note& listOf(const void* owner) noexcept
{
    constexpr std::uint64_t GOLDEN = 0x9E3779B97F4A7C15; // Knuth, The Art of Computer Programming, volume 3, 6.4
    return g_lists[FIRST_NOTES * (reinterpret_cast<std::uintptr_t>(owner) * GOLDEN >> (64 - LIST_BITS))];
}

Note* nextOf(Note& note) noexcept
{
    constexpr std::less<> IS_BEFORE;
    Note* const begin = g_lists.data();
    const bool isAllocated = IS_BEFORE(&note, begin) || !IS_BEFORE(&note, begin + g_lists.size());
    if (isAllocated || static_cast<std::size_t>(&note - begin) % FIRST_NOTES == FIRST_NOTES - 1)
        return note.next.load(std::memory_order_acquire);
    return &note + 1;
}

enum class Kind { OPERATION, CAUSE };

Note* findNote(const void* owner, Kind kind) noexcept
{
    for (Note* note = &listOf(owner); note != nullptr; note = nextOf(*note)) {
        if (note->owner.load(std::memory_order_acquire) == owner && (note->cause != 0) == (kind == Kind::CAUSE))
            return note;
    }
    return nullptr;
}

using Text = std::unique_ptr<char16_t[]>;

void write(const Exception& failure, Text text, std::size_t length, std::int32_t cause) noexcept
{
    const auto fill = [&](Note& note) {
        note.text = text.release();
        note.length = length;
        note.cause = cause;
        note.owner.store(&failure, std::memory_order_release);
    };
    Note* const list = &listOf(&failure);
    for (Note* note = list; note != nullptr; note = nextOf(*note)) {
        const void* none = nullptr;
        if (note->owner.compare_exchange_strong(
                none, &g_lists, std::memory_order_acquire)) // an address that no exception has
            return fill(*note);
    }
    auto* const made = new (std::nothrow) Note;
    if (made == nullptr)
        return;
    fill(*made);
    std::atomic<Note*>& place = list[FIRST_NOTES - 1].next;
    Note* next = place.load(std::memory_order_relaxed);
    do
        made->next.store(next, std::memory_order_relaxed);
    while (!place.compare_exchange_weak(next, made, std::memory_order_release, std::memory_order_relaxed));
}

void dropText(Note& note) noexcept
{
    delete[] std::exchange(note.text, nullptr);
    note.length = 0;
}

} // namespace

String getOccasion(const Exception& failure)
{
    const Note* const note = findNote(&failure, Kind::OPERATION);
    return note != nullptr ? String(note->view()) : String();
}

void noteOccasion(const Exception& failure, std::u16string_view operation, std::u16string_view object) noexcept
{
    if (findNote(&failure, Kind::OPERATION) != nullptr)
        return;
    try {
        const std::u16string_view blank = !operation.empty() && !object.empty() ? u" " : u"";
        const std::size_t length = operation.size() + blank.size() + object.size();
        Text text = std::make_unique_for_overwrite<char16_t[]>(length);
        char16_t* end = text.get();
        for (const std::u16string_view part : {operation, blank, object})
            end = std::copy(part.begin(), part.end(), end);
        write(failure, std::move(text), length, 0);
    } catch (const std::bad_alloc&) {
        // The exception is thrown without a note.
    }
}

std::int32_t getCause(const Exception& failure) noexcept
{
    const std::int32_t result = failure.getResult();
    const Note* const note = result == RESULT_FAIL ? findNote(&failure, Kind::CAUSE) : nullptr;
    return note != nullptr ? note->cause : result;
}

void noteCause(const Exception& failure, std::int32_t result) noexcept
{
    if (result != 0 && findNote(&failure, Kind::CAUSE) == nullptr)
        write(failure, {}, 0, result);
}

namespace detail {

void copyOccasion(const Exception& from, const Exception& to) noexcept
{
    if (&from == &to)
        return;
    forgetOccasion(to);
    if (const Note* const note = findNote(&from, Kind::CAUSE))
        write(to, {}, 0, note->cause);
    const Note* const note = findNote(&from, Kind::OPERATION);
    if (note == nullptr)
        return;
    try {
        Text text = std::make_unique_for_overwrite<char16_t[]>(note->length);
        std::copy_n(note->text, note->length, text.get());
        write(to, std::move(text), note->length, 0);
    } catch (const std::bad_alloc&) {
        // The copy has no note of the operation.
    }
}

void forgetOccasion(const Exception& failure) noexcept
{
    for (Note* note = &listOf(&failure); note != nullptr; note = nextOf(*note)) {
        if (note->owner.load(std::memory_order_acquire) != &failure)
            continue;
        dropText(*note);
        note->owner.store(nullptr, std::memory_order_release);
    }
}

void freeOccasions() noexcept
{
    for (Note& list : g_lists) {
        dropText(list);
        for (Note* note = list.next.exchange(nullptr); note != nullptr;) {
            dropText(*note);
            delete std::exchange(note, nextOf(*note));
        }
    }
}

} // namespace detail

} // namespace vx
