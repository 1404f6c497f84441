#include "Lines.h"

#include "Ending.h"
#include "Texts.h"
#include "common/Component.h"
#include "common/Failure.h"
#include "common/LossyReader.h"

#include <vx/text/charset/CharsetException.h>

#include <utility>

namespace vxlog {

using namespace vx;
using namespace vxtools;

Lines::Lines(const Options& options, const Input& input, std::function<void()> beforeRead)
    : m_options(options)
    , m_name(input.name())
    , m_levels(options.levelFrom, options.level)
{
    try {
        m_reader = new io::BufferedReader(
            new LossyReader(new EndingInput(input, std::move(beforeRead)), String(options.encoding), BLOCK_SIZE),
            BLOCK_SIZE);
    } catch (const text::charset::UnknownEncodingException&) {
        throw UsageError(unknownEncoding(options.encoding));
    }
}

bool Lines::next(Line& line)
{
    try {
        do {
            if (m_reader->readLine(line.text) < 0)
                return false;
            line.level = m_levels.takeFrom(line.text);
        } while (line.level < m_options.leastLevel || line.level > m_options.mostLevel);
        replaceLoneSurrogates(line.text);
        return true;
    } catch (const Exception& failure) {
        throw Failure(m_name, textOf(failure));
    }
}

} // namespace vxlog
