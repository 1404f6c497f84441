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
#include <mutex>
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
/// entries without the writer, on any thread, and these are the same. Thread-safe.
class Form {
public:
    /// Null if the form cannot be learned.
    static std::shared_ptr<const Form> learn(const Settings& settings);
    Form();
    ~Form();
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    /// Appends the bytes of an entry up to its sequence number, with this.
    void appendHead(Block& block, std::int64_t sequence) const;
    /// Appends those after it. `time` is its text. False, with some bytes appended, if only the writer knows the form of
    /// this entry.
    bool appendRest(std::string& bytes, const Fields& fields, std::string_view time) const;
    /// Releases all encoders, and keeps none after that. Call it before the program ends: the codec of a component must
    /// be released by then, also if a reference to this form is still held.
    void retire() const;
    /// Whether only the writer knows the form of its first entry, for example because a byte order mark precedes it.
    bool beginsOtherwise() const { return m_beginsOtherwise; }
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

    /// Encodes texts one after the other, in the encoding of the log.
    class Encoder;

    bool split(Printer& printer);
    bool learnUnits(Printer& printer);
    bool learnEncoding(const Settings& settings);
    bool appendUtf8(std::string& bytes, const Fields& fields, std::string_view time) const;
    bool appendText(std::string& bytes, std::string_view text) const;

    bool m_hasClient = false;
    bool m_beginsOtherwise = false;
    std::string m_head;
    std::string m_afterSequence;
    std::vector<Place> m_places;
    std::array<Unit, 256> m_units {}; ///< of each byte of UTF-8
    std::array<std::string, 128> m_escapes;

    // For a log that is not in UTF-8. A rest is encoded after a head, because its bytes may depend on what precedes it.
    std::string m_encoding; ///< empty for UTF-8
    std::string m_headText; ///< in UTF-8, with a digit
    std::size_t m_headSize = 0; ///< of its bytes
    std::array<std::string, 10> m_digits;
    mutable std::mutex m_lock;
    mutable bool m_isRetired = false;
    mutable std::vector<std::unique_ptr<Encoder>> m_encoders; ///< those that no thread uses
};

} // namespace vxlogd
