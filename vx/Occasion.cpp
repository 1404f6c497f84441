#include "vx/Occasion.h"

#include "vx/detail/Occasions.h"

#include <atomic>
#include <new>
#include <string>
#include <utility>

namespace vx {

namespace {

/// A note. It stays in the list for ever, so the list can be read without a lock, even in a child process that was
/// forked while another thread wrote a note. The number of notes is the largest number of exceptions with a note that
/// existed at one time.
struct Note {
    std::atomic<const void*> owner; ///< the exception; null while the note is free
    std::u16string text; ///< only the thread that claimed the note changes this and the cause
    std::int32_t cause; ///< 0 if the note has the text
    Note* next;
};

constinit std::atomic<Note*> g_notes = nullptr;

enum class Kind { OPERATION, CAUSE };

Note* findNote(const void* owner, Kind kind) noexcept
{
    for (Note* note = g_notes.load(std::memory_order_acquire); note != nullptr; note = note->next) {
        if (note->owner.load(std::memory_order_acquire) == owner && (note->cause != 0) == (kind == Kind::CAUSE))
            return note;
    }
    return nullptr;
}

void write(const Exception& failure, std::u16string&& text, std::int32_t cause) noexcept
{
    for (Note* note = g_notes.load(std::memory_order_acquire); note != nullptr; note = note->next) {
        const void* none = nullptr;
        if (note->owner.compare_exchange_strong(
                none, &g_notes, std::memory_order_acquire)) { // an address that no exception has
            note->text = std::move(text);
            note->cause = cause;
            note->owner.store(&failure, std::memory_order_release);
            return;
        }
    }
    auto* const made
        = new (std::nothrow) Note {&failure, std::move(text), cause, g_notes.load(std::memory_order_relaxed)};
    if (made == nullptr)
        return;
    while (!g_notes.compare_exchange_weak(made->next, made, std::memory_order_release, std::memory_order_relaxed)) { }
}

} // namespace

String getOccasion(const Exception& failure)
{
    const Note* const note = findNote(&failure, Kind::OPERATION);
    return note != nullptr ? String(std::u16string_view(note->text)) : String();
}

void noteOccasion(const Exception& failure, std::u16string_view operation, std::u16string_view object) noexcept
{
    if (findNote(&failure, Kind::OPERATION) != nullptr)
        return;
    try {
        std::u16string text;
        text.reserve(operation.size() + 1 + object.size());
        text.append(operation);
        if (!operation.empty() && !object.empty())
            text += u' ';
        write(failure, std::move(text.append(object)), 0);
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
        write(failure, {}, result);
}

namespace detail {

void copyOccasion(const Exception& from, const Exception& to) noexcept
{
    if (&from == &to)
        return;
    forgetOccasion(to);
    if (const Note* const note = findNote(&from, Kind::CAUSE))
        write(to, {}, note->cause);
    const Note* const note = findNote(&from, Kind::OPERATION);
    if (note == nullptr)
        return;
    try {
        write(to, std::u16string(note->text), 0);
    } catch (const std::bad_alloc&) {
        // The copy has no note of the operation.
    }
}

void forgetOccasion(const Exception& failure) noexcept
{
    for (Note* note = g_notes.load(std::memory_order_acquire); note != nullptr; note = note->next) {
        if (note->owner.load(std::memory_order_acquire) != &failure)
            continue;
        std::u16string().swap(note->text);
        note->owner.store(nullptr, std::memory_order_release);
    }
}

void freeOccasions() noexcept
{
    for (Note* note = g_notes.exchange(nullptr); note != nullptr;)
        delete std::exchange(note, note->next);
}

} // namespace detail

} // namespace vx
