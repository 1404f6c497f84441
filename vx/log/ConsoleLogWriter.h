#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/log/ILogProcessor.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vx::log {

/// Writes each entry for a person at a terminal: time, level, name and text on one line, then the other fields as
/// "name=value". Further lines of a text are indented. Control characters become visible ones, so that no entry
/// controls the terminal.
///
/// Each entry is one write to the system, in UTF-8. Several threads may share a writer.
class VX_API ConsoleLogWriter : public Object, public ILogProcessor {
public:
    enum class Colours {
        ON_A_TERMINAL, ///< unless the environment has NO_COLOR, or TERM is "dumb"
        ALWAYS,
        NEVER
    };
    static constexpr std::uint32_t STANDARD_OUTPUT = 1;
    static constexpr std::uint32_t STANDARD_ERROR = 2;

    /// The handle is not owned.
    static Reference<ConsoleLogWriter> create(
        std::uint32_t handle = STANDARD_ERROR, Colours colours = Colours::ON_A_TERMINAL);
    ~ConsoleLogWriter() noexcept override;

    VX_OBJECT_UNKNOWN(Object)

    /// The colour of all levels up to `highest` that no band before it has. `codes` are parameters of the sequence
    /// "select graphic rendition" of ECMA-48, such as "1;31"; empty for no colour.
    struct Band {
        std::int32_t highest;
        std::string codes;
    };
    /// Sorted by `highest`. At first the bands suit levels as the system's journal counts them, from 0 for an emergency
    /// to 7 for a detail. Not while other threads log.
    void setBands(std::vector<Band> bands);

    // ILogProcessor
    /// Throws ResultException if the entry cannot be written.
    void process(const ILogEntry* entry) override;

private:
    ConsoleLogWriter(std::uint32_t handle, bool isColoured);

    const std::uint32_t m_handle;
    const bool m_isColoured;
    std::vector<Band> m_bands;
};

} // namespace vx::log
