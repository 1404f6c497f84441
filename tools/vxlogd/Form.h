#pragma once

#include "Settings.h"

#include <vx/Reference.h>
#include <vx/io/OutputStream.h>
#include <vx/log/ILogProcessor.h>
#include <vx/log/LogEntry.h>
#include <vx/log/ZonedTimeStamp.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vxlogd {

/// Collects bytes.
class Block final : public vx::io::OutputStream {
public:
    const std::vector<signed char>& get() const { return m_bytes; }
    std::string_view view() const { return {reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size()}; }
    std::size_t getSize() const { return m_bytes.size(); }
    void cut(std::size_t size) { m_bytes.resize(size); }
    void append(std::string_view bytes) { m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end()); }

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override
    {
        m_bytes.insert(m_bytes.end(), bytes, bytes + length);
    }
    void flush() override { }
    void close() override { }

private:
    std::vector<signed char> m_bytes;
};

/// Prints entries into a block, as the settings say. A new document is begun in the block.
vx::Reference<vx::log::ILogProcessor> createWriter(const Settings& settings, Block& block);

/// The fields of one entry.
struct Fields {
    std::int64_t sequence;
    std::int32_t level;
    const vx::log::ZonedTimeStamp* time;
    std::string_view peer; ///< in UTF-8, as the text
    std::string_view text;
    std::string_view client {}; ///< who sent the line; empty if the log does not tell it
    std::int64_t line = 0; ///< its number for the client
};
vx::Reference<vx::log::LogEntry> createEntry(const Fields& fields);

/// The form that the writer of a log gives to entries, learned from samples that it printed. It makes the bytes of most
/// entries without the writer, on any thread, and these are the same. Immutable.
class Form {
public:
    /// Null if the form cannot be learned.
    static std::shared_ptr<const Form> learn(const Settings& settings);

    /// Appends what follows the sequence number in an entry. `time` is its text. False, with some bytes appended, if
    /// only the writer knows the form of this entry.
    bool appendRest(std::string& bytes, const Fields& fields, std::string_view time) const;
    /// What precedes the sequence number.
    const std::string& getHead() const { return m_head; }
    /// Whether entries have the client and its number of the line.
    bool hasClient() const { return m_hasClient; }

private:
    class Printer;
    enum class Field { LEVEL, TIME, PEER, TEXT, CLIENT, LINE };
    struct Place {
        Field field;
        std::string after; ///< up to the next field
    };
    enum class Unit : std::uint8_t { UNKNOWN, AS_IT_IS, ESCAPED };

    bool split(Printer& printer);
    bool learnUnits(Printer& printer);
    bool appendText(std::string& bytes, std::string_view text) const;

    bool m_hasClient = false;
    std::string m_head;
    std::string m_afterSequence;
    std::vector<Place> m_places;
    std::array<Unit, 256> m_units {}; ///< of each byte of UTF-8
    std::array<std::string, 128> m_escapes;
};

} // namespace vxlogd
