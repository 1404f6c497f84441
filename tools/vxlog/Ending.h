#pragma once

#include <vx/io/InputStream.h>

#include "common/Input.h"

namespace vxlog {

/// Lets SIGTERM, SIGINT and SIGHUP end the reading instead of the program, where whoever started it does not ignore them.
void catchEndingSignals();

/// Whether one of them has come.
bool endingWasAskedFor() noexcept;

/// The bytes of the input, up to its end or to the moment when the program is asked to end.
class EndingInput : public vx::io::InputStream {
public:
    /// The input lives as long as this object.
    explicit EndingInput(const vxtools::Input& input);

    // InputStream
    using InputStream::read;
    std::int32_t read(signed char* target, std::int32_t length) override;

private:
    const vxtools::Input& m_input;
};

} // namespace vxlog
