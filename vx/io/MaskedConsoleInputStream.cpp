#include "vx/io/MaskedConsoleInputStream.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/detail/ReleaseReport.h"
#include "vx/io/detail/StreamChecks.h"
#include "vxsys/Console.h"

namespace vx::io {

namespace {

enum Key { CTRL_C = 3, BACKSPACE = 8, LINE_FEED = 10, CARRIAGE_RETURN = 13, CTRL_Z = 26 };

/// Switches the echo of keys off to the end of the block.
class [[nodiscard]] HiddenKeys {
public:
    HiddenKeys() { throwIfFailed(VXConsoleBeginKeys()); }
    ~HiddenKeys() noexcept(false) { m_report.report(VXConsoleEndKeys()); }
    HiddenKeys(const HiddenKeys&) = delete;
    HiddenKeys& operator=(const HiddenKeys&) = delete;

private:
    const vx::detail::ReleaseReport m_report;
};

/// The number of bytes of the last key: those of a UTF-8 sequence if the text ends with one, otherwise 1; 0 for an
/// empty text.
std::int32_t lengthOfLastKey(const signed char* text, std::int32_t length)
{
    constexpr struct {
        unsigned char mask;
        unsigned char lead;
    } LEADS[] = {{0xE0, 0xC0}, {0xF0, 0xE0}, {0xF8, 0xF0}}; // of 2, 3 and 4 bytes

    std::int32_t followers = 0;
    while (followers < length && (text[length - 1 - followers] & 0xC0) == 0x80)
        ++followers;
    if (followers < 1 || followers > 3 || followers == length)
        return length > 0 ? 1 : 0;
    const auto& row = LEADS[followers - 1];
    return (text[length - 1 - followers] & row.mask) == row.lead ? followers + 1 : 1;
}

} // namespace

std::int32_t MaskedConsoleInputStream::read(signed char* target, std::int32_t length)
{
    if (length < 1)
        return 0;
    detail::requireUnits(target);

    const HiddenKeys hidden;
    std::int32_t count = 0;
    bool isEnded = false;
    while (count < length && !isEnded) {
        std::int32_t key = 0;
        const std::int32_t result = VXConsoleReadKey(&key);
        if (result == RESULT_END_OF_FILE)
            key = CTRL_Z;
        else
            throwIfFailed(result);

        switch (key) {
        case CTRL_Z:
            isEnded = true;
            break;
        case CTRL_C:
            throw UserAbortException();
        case BACKSPACE:
            count -= lengthOfLastKey(target, count);
            break;
        case CARRIAGE_RETURN:
        case LINE_FEED:
            target[count++] = LINE_FEED;
            isEnded = true;
            break;
        default:
            target[count++] = static_cast<signed char>(key);
        }
    }
    return count > 0 ? count : -1;
}

} // namespace vx::io
