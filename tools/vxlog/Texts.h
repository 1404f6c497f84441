#pragma once

#include "common/Messages.h"

// The error messages of vxlog.

namespace vxlog {

using vxtools::Message;

inline constexpr Message NO_FIELD {u"vxlog.no-field", "--fields knows no \"{0}\""};
inline constexpr Message NO_FIELDS {u"vxlog.no-fields", "--fields is empty"};
inline constexpr Message EMPTY_FILE_NAME {u"vxlog.empty-file-name", "a file name is empty"};
inline constexpr Message SERVER_DECIDES {u"vxlog.server-decides", "with --to the server decides how the log looks"};
inline constexpr Message ESCAPE_IS_XML {u"vxlog.escape-is-xml", "--escape needs --format xml"};

inline constexpr Message NO_ROTATION {
    u"vxlog.no-rotation", "a log is rotated only with --file and without --format xml"};

inline constexpr Message NO_DESTINATION {u"vxlog.no-destination", "--to takes vxlog://HOST:PORT, not \"{0}\""};
inline constexpr Message NO_PORT {u"vxlog.no-port", "--to: no such port in \"{0}\""};
inline constexpr Message NO_PARAMETER {u"vxlog.no-parameter", "--to: {0} is a number, not \"{1}\""};
inline constexpr Message NOT_ACKNOWLEDGED {u"vxlog.not-acknowledged", "has acknowledged {0} of {1} lines"};

inline constexpr Message NOT_CONTINUED {
    u"vxlog.not-continued", "is not empty, and an XML document cannot be continued"};
inline constexpr Message UNKNOWN_ENCODING {u"vxlog.unknown-encoding", "unknown encoding \"{0}\""};
inline constexpr Message SEE_LIST {u"vxlog.see-list", "vxconv --list prints the known ones"};
inline constexpr Message AFTER_ENTRIES {u"vxlog.after-entries", "{0} (after {1} entries)"};
inline constexpr Message WAITING_FOR_SIGNALS {u"vxlog.waiting-for-signals", "waiting for signals"};

} // namespace vxlog
