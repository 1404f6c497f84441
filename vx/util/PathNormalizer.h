#pragma once

#include "vx/String.h"

#include <string_view>

namespace vx::util {

/// Removes "." and ".." components and repeated separators from a path, without access to the file system. It has no
/// notion of roots: a ".." that leads above the start of the text is kept, and a separator at the start is treated as
/// an empty name that ".." removes. One thread at a time.
class VX_API PathNormalizer : public Object {
public:
    /// SLASH_SYSTEM is the backslash.
    enum SLASH_TYPE : int { SLASH_SYSTEM = 0, SLASH_FORWARD = 1, SLASH_BACKWARD = 2 };

    enum STATE : int {
        STATE_START = 0,
        STATE_NAME = 1,
        STATE_SLASH = 2,
        STATE_SLASH_DOT = 3,
        STATE_SLASH_DOT_DOT = 4,
        STATE_LEAD_DOT = 5,
        STATE_LEAD_DOT_SLASH = 6,
        STATE_LEAD_DOT_DOT = 7,
        STATE_LEAD_UP = 8,
        STATE_END = 9
    };

    explicit PathNormalizer(SLASH_TYPE type = SLASH_SYSTEM);
    ~PathNormalizer() noexcept override;

    /// The separator of the results. In the source both slashes are separators. A value that is none of the three
    /// throws Exception.
    void setSlashType(SLASH_TYPE type);

    String normalize(const String& text);

private:
    friend class FilePath;

    /// Writes the normalised `source` to `output`, which may be the same place, and returns its length. The result is
    /// never longer than the source.
    int run(std::u16string_view source, char16_t* output) noexcept;
    STATE nextState() const noexcept;
    /// Writes or drops the text that the present state holds back, and enters `next`.
    void transition(STATE next) noexcept;
    void write(char16_t ch) noexcept { m_output[m_length++] = ch; }

    char16_t m_separator;
    STATE m_state = STATE_START;
    std::u16string_view m_source;
    char16_t* m_output = nullptr;
    int m_length = 0;
    int m_index = 0;
};

} // namespace vx::util
