#pragma once

#include <vx/io/InputStream.h>

#include "common/Input.h"

#include <functional>

namespace vxlog {

/// Makes SIGTERM, SIGINT and SIGHUP end the reading instead of the program. Signals that were ignored at start stay
/// ignored.
void catchEndingSignals();

/// Whether one of these signals was received.
bool endingWasAskedFor() noexcept;

/// A descriptor that is readable as soon as one of them was received.
int endingDescriptor() noexcept;

/// Reads the input up to its end, or until a signal requests the end of the program.
class EndingInput : public vx::io::InputStream {
public:
    /// The input must outlive this object. `beforeRead` is called before each wait for more of it.
    explicit EndingInput(const vxtools::Input& input, std::function<void()> beforeRead = {});

    // InputStream
    using InputStream::read;
    std::int32_t read(signed char* target, std::int32_t length) override;

private:
    const vxtools::Input& m_input;
    const std::function<void()> m_beforeRead;
};

} // namespace vxlog
