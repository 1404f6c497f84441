#pragma once

#include "vx/log/AbstractLogWriter.h"

namespace vx::log {

/// Writes a document with an element for each entry. Its head is written at construction, its end by the destructor: a
/// process that ends without that leaves a document without its last line. The writer has to encode to UTF-8, which the
/// head announces. A field name with a blank opens an element with attributes.
///
/// A writer with a buffer keeps the head until its first flush, and loses it with the first entry if that flush fails.
/// Flush the writer after construction to know that the head is in the document.
class VX_API XmlLogWriter : public AbstractLogWriter {
public:
    /// What becomes of the texts in a document.
    enum class Values {
        AS_THEY_ARE, ///< what is markup in a value is markup in the document
        ESCAPED ///< any value is text in the document: markup is escaped, and what XML 1.0 cannot hold becomes U+FFFD
    };

    /// `writer` is counted.
    static Reference<ILogProcessor> create(io::Writer* writer, Values values = Values::AS_THEY_ARE);
    ~XmlLogWriter() noexcept(false) override;

protected:
    String format(const ILogEntry* entry) override;
    void print(const ILogEntry& entry, vx::detail::TextBuilder& text) override;

private:
    XmlLogWriter(io::Writer* writer, Values values);

    const Values m_values;
};

} // namespace vx::log
