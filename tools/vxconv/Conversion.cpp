#include "Conversion.h"

#include "CheckedInput.h"
#include "Detection.h"
#include "TextPlace.h"
#include "Texts.h"
#include "common/Component.h"
#include "common/Failure.h"
#include "common/Input.h"
#include "common/Output.h"
#include "common/Program.h"
#include "common/Progress.h"

#include <vx/Exception.h>
#include <vx/Reference.h>
#include <vx/TerminatedText.h>
#include <vx/io/BufferedReader.h>
#include <vx/io/FileInputStream.h>
#include <vx/io/FileOutputStream.h>
#include <vx/io/InputStreamReader.h>
#include <vx/io/OutputStreamWriter.h>
#include <vx/text/charset/CharsetException.h>
#include <vxsys/Surrogate.h>

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>
#include <vector>

namespace vxconv {

using namespace vx;
using namespace vxtools;
using namespace vx::io;
using namespace vx::text::charset;

namespace {

/// The size of each buffer, in bytes or units.
constexpr std::int32_t BLOCK_SIZE = 64 * 1024;

template <class Converter>
String canonicalName(const std::string& encoding)
{
    try {
        const Reference<Converter> converter(Converter::getConverter(TerminatedText(String(encoding))));
        return converter->getEncodingName();
    } catch (const Exception&) { // also for a name that is not UTF-8
        throw Failure(unknownEncoding(encoding));
    }
}

/// The text of the input.
class Source {
public:
    Source(const Options& options, const Input& input, const Detected& from)
        : m_name(input.name())
        , m_start(from.start)
        , m_progress(input.size())
        , m_encoding(canonicalName<ByteToCharConverter>(from.encoding))
        , m_reader(new InputStreamReader(
              new CheckedInput(input, m_encoding, m_start, m_progress), TerminatedText(m_encoding), BLOCK_SIZE))
    {
        m_reader->setSubstitutionMode(!options.strict);
        if (options.lines)
            m_lines = new BufferedReader(m_reader.get(), BLOCK_SIZE);
        else
            m_block.resize(BLOCK_SIZE);
    }

    /// The next piece: a line with its LF, or a block. Empty at the end.
    std::u16string_view next()
    {
        try {
            return m_lines != nullptr ? nextLine() : nextBlock();
        } catch (const UnmappableCharacterException&) {
            throw Failure(m_name, atByte(vxconv::NO_CHARACTER(m_encoding.toUtf8())));
        } catch (const InvalidCharacterException& failure) {
            throw Failure(m_name, atByte(textOf(failure)));
        } catch (const Exception& failure) {
            throw Failure(m_name, textOf(failure));
        }
    }

private:
    std::u16string_view nextBlock()
    {
        const std::int32_t length = m_reader->read(m_block.data(), BLOCK_SIZE);
        return {m_block.data(), static_cast<std::size_t>(std::max(length, 0))};
    }

    std::u16string_view nextLine()
    {
        if (m_lines->readLine(m_line) < 0)
            return {};
        m_line += u'\n';
        return m_line;
    }

    Text atByte(const Text& why) const { return AT_BYTE(m_start + m_reader->getPosition(), why); }

    Text m_name;
    const std::int64_t m_start;
    vxtools::Progress m_progress;
    String m_encoding;
    Reference<InputStreamReader> m_reader;
    Reference<BufferedReader> m_lines;
    std::vector<char16_t> m_block;
    String m_line;
};

/// The text of the output. For a character that it cannot encode, the error gives the position in the input.
class Target {
public:
    Target(const Options& options, const Input& input, const Output& output)
        : m_inputName(input.name())
        , m_outputName(output.name())
        , m_encoding(canonicalName<CharToByteConverter>(options.to))
        , m_writer(new OutputStreamWriter(new FileOutputStream(static_cast<std::uint32_t>(output.descriptor()), false),
              TerminatedText(m_encoding), BLOCK_SIZE))
    {
        m_writer->setSubstitutionMode(!options.strict);
    }

    void write(std::u16string_view text)
    {
        if (const std::size_t lone = m_pairs.findLone(text); lone != text.npos)
            failAt(text.substr(0, lone), HALF_PAIR());
        try {
            m_writer->write(text.data(), static_cast<std::int32_t>(text.size()));
        } catch (const UnmappableCharacterException&) {
            // Below 0: the first half of the pair was in the previous piece.
            const std::int64_t index = std::max<std::int64_t>(m_writer->getPosition() - m_written, 0);
            failAt(text.substr(0, static_cast<std::size_t>(index)),
                NO_FORM(nameOf(text, static_cast<std::size_t>(index)), m_encoding.toUtf8()));
        } catch (const Exception& failure) {
            throw Failure(m_outputName, textOf(failure));
        }
        m_place.advance(text);
        m_last = text.back();
        m_written += static_cast<std::int64_t>(text.size());
    }

    void finish()
    {
        if (m_pairs.isOpen())
            failAt({}, HALF_PAIR());
        try {
            m_writer->flush();
        } catch (const Exception& failure) {
            throw Failure(m_outputName, textOf(failure));
        }
    }

private:
    [[noreturn]] void failAt(std::u16string_view before, const Text& why)
    {
        m_place.advance(before);
        throw Failure(m_inputName, AT_CHARACTER(m_place.line(), m_place.column(), why));
    }

    /// "U+20AC", of which the unit at `index` is the whole or a half.
    std::string nameOf(std::u16string_view text, std::size_t index) const
    {
        if (vxsys::isLead(text[index]) && index + 1 < text.size())
            ++index;
        std::uint32_t character = text[index];
        if (vxsys::isTrail(text[index]))
            character = vxsys::codePoint(index > 0 ? text[index - 1] : m_last, text[index]);
        char name[16];
        std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(character));
        return name;
    }

    Text m_inputName;
    Text m_outputName;
    String m_encoding;
    Reference<OutputStreamWriter> m_writer;
    SurrogatePairs m_pairs;
    TextPlace m_place;
    char16_t m_last = 0;
    std::int64_t m_written = 0; // units
};

/// Refuses a standard output that is the file of the input: what is written there would be read again.
void requireOtherFile(const Input& input, const Output& output)
{
    struct stat source, target;
    if (::fstat(output.descriptor(), &target) == 0 && S_ISREG(target.st_mode)
        && ::fstat(input.descriptor(), &source) == 0 && source.st_dev == target.st_dev
        && source.st_ino == target.st_ino)
        throw Failure(output.name(), IS_INPUT());
}

} // namespace

void requireEncodings(const Options& options)
{
    canonicalName<ByteToCharConverter>(options.isAuto() ? options.fallback : options.from);
    canonicalName<CharToByteConverter>(options.to);
}

void convertFile(
    const Options& options, const std::string& inputPath, const std::string& outputPath, Messages& messages)
{
    const Input input(inputPath);
    const Detected from = options.isAuto() ? detectEncoding(input, options.fallback) : Detected {options.from, 0};
    if (options.verbose)
        complain("vxconv", messages.say(READ_AS(input.name(), from.encoding)));
    Output output(outputPath);
    requireOtherFile(input, output);
    Source source(options, input, from);
    Target target(options, input, output);
    for (std::u16string_view text; !(text = source.next()).empty();)
        target.write(text);
    target.finish();
    output.commit();
}

} // namespace vxconv
