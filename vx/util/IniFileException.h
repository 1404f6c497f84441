#pragma once

#include "vx/Exception.h"

namespace vx::util {

/// A failure of an INI file or of an iterator over one.
class VX_API IniFileException : public Exception {
public:
    enum TYPE {
        TYPE_FILE_NOT_OPENED = 0, ///< the description is the path
        TYPE_NO_MORE_ELEMENTS = 1, ///< no description
        TYPE_NO_SUCH_SET = 2 ///< the description is the name of the set
    };

    IniFileException(TYPE type, const String& description);
    ~IniFileException() noexcept override;

    TYPE GetType() const;

private:
    TYPE m_type;
};

} // namespace vx::util
