#pragma once

#include "vx/log/AbstractLogWriter.h"

namespace vx::log {

/// Writes a document with an element for each entry. The constructor writes its head and the destructor its last line:
/// a process that ends without calling the destructor leaves a document without the last line. The writer has to encode
/// to UTF-8, the encoding that the head declares. A field name with a blank opens an element with attributes.
///
/// A writer with a buffer keeps the head until its first flush, and loses it with the first entry if that flush fails.
/// Flush the writer after construction to know that the head is in the document.
class VX_API XmlLogWriter : public AbstractLogWriter {
public:
    /// How texts are written to the document.
    enum class Values {
        AS_THEY_ARE, ///< markup in a value is markup in the document
        ESCAPED ///< any value is text in the document: markup is escaped, and what XML 1.0 cannot hold becomes U+FFFD
    };

    /// Holds a reference to `writer`.
    static Reference<ILogProcessor> create(io::Writer* writer, Values values = Values::AS_THEY_ARE);
    ~XmlLogWriter() noexcept(false) override;

protected:
    String format(const ILogEntry* entry) override;
    void print(const ILogEntry& entry, vx::detail::TextBuilder& text) override;

private:
    friend class detail::LogWriterFace;

    XmlLogWriter(io::Writer* writer, Values values);

    const Values m_values;
};

} // namespace vx::log
