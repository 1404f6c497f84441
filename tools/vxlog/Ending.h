#pragma once

#include <vx/io/InputStream.h>

#include "common/Input.h"

namespace vxlog {

/// Makes SIGTERM, SIGINT and SIGHUP end the reading instead of the program. Signals that were ignored at start stay
/// ignored.
void catchEndingSignals();

/// Whether one of these signals was received.
bool endingWasAskedFor() noexcept;

/// Reads the input up to its end, or until a signal requests the end of the program.
class EndingInput : public vx::io::InputStream {
public:
    /// The input must outlive this object.
    explicit EndingInput(const vxtools::Input& input);

    // InputStream
    using InputStream::read;
    std::int32_t read(signed char* target, std::int32_t length) override;

private:
    const vxtools::Input& m_input;
};

} // namespace vxlog
