#pragma once

#include "Levels.h"
#include "Options.h"
#include "common/Input.h"

#include <vx/Reference.h>
#include <vx/String.h>
#include <vx/io/BufferedReader.h>

#include <functional>

namespace vxlog {

/// A line of the input.
struct Line {
    vx::String text;
    int level = 0;
};

/// The lines of the input whose level is in the range that the options ask for.
class Lines {
public:
    /// The input must outlive this object. Throws UsageError for an unknown encoding.
    Lines(const Options& options, const vxtools::Input& input, std::function<void()> beforeRead = {});

    /// False at the end of the input, or after a signal that requests the end. Throws Failure.
    bool next(Line& line);

private:
    const Options& m_options;
    vxtools::Text m_name;
    Levels m_levels;
    vx::Reference<vx::io::BufferedReader> m_reader;
};

} // namespace vxlog
