#pragma once

#include "common/Messages.h"

// The error messages of vxlog.

namespace vxlog {

using vxtools::Message;

inline constexpr Message NO_FIELD {u"vxlog.no-field", "--fields knows no \"{0}\""};
inline constexpr Message NO_FIELDS {u"vxlog.no-fields", "--fields is empty"};
inline constexpr Message SERVER_DECIDES {u"vxlog.server-decides", "with --to the server decides how the log looks"};
inline constexpr Message ESCAPE_IS_XML {u"vxlog.escape-is-xml", "--escape needs --format xml"};
inline constexpr Message NO_LEVEL_SOURCE {
    u"vxlog.no-level-source", "--level-from takes prefix or json:FIELD, not \"{0}\""};
inline constexpr Message NO_LEVEL_RANGE {u"vxlog.no-level-range", "--min-level is above --max-level"};
inline constexpr Message NO_MODE {
    u"vxlog.no-mode", "--mode takes octal digits such as 640, with the owner's right to write, not \"{0}\""};
inline constexpr Message SPOOL_NEEDS_ACK {u"vxlog.spool-needs-ack", "--spool needs a server that answers, not ack=0"};

inline constexpr Message NO_ROTATION {
    u"vxlog.no-rotation", "a log is rotated only with --file and without --format xml"};

inline constexpr Message NO_DESTINATION {u"vxlog.no-destination",
    "--to takes vxlog://HOST:PORT, vxlogs://HOST:PORT or kafka://HOST:PORT/TOPIC, not \"{0}\""};
inline constexpr Message NO_PORT {u"vxlog.no-port", "--to: no such port in \"{0}\""};
inline constexpr Message NOT_ACKNOWLEDGED {u"vxlog.not-acknowledged", "{0}; it has acknowledged {1} of {2} lines"};
inline constexpr Message TRYING_AGAIN {u"vxlog.trying-again", "{0}: {1}; trying again"};
inline constexpr Message LINE_REFUSED {u"vxlog.line-refused", "{0}: a line is lost: {1}"};
inline constexpr Message REFUSED {u"vxlog.refused", "{0} lines are lost: {1}"};
inline constexpr Message LOST_ON_THE_WAY {
    u"vxlog.lost-on-the-way", "the connection was lost, and maybe lines on their way; ack=1 prevents that"};
inline constexpr Message KNOWS_MORE {u"vxlog.knows-more", "acknowledges lines that were never sent"};
inline constexpr Message NO_LEVELS {u"vxlog.no-levels", "is older than this program and takes one level for all lines"};

inline constexpr Message SPOOL_IN_USE {u"vxlog.spool-in-use", "another process uses this spool"};
inline constexpr Message SPOOL_CUT {u"vxlog.spool-cut", "is shorter than it was"};
inline constexpr Message SPOOL_FULL {u"vxlog.spool-full", "the spool is full and the server away"};
inline constexpr Message SPOOL_LOSES {u"vxlog.spool-loses", "{0}: {1}; lines are lost"};
inline constexpr Message LINES_LOST {u"vxlog.lines-lost", "{0} lines are lost"};
inline constexpr Message LINES_WAIT {u"vxlog.lines-wait", "{0} lines wait here for the next run"};

inline constexpr Message NOT_CONTINUED {
    u"vxlog.not-continued", "is not empty, and an XML document cannot be continued"};
inline constexpr Message AFTER_ENTRIES {u"vxlog.after-entries", "{0} (after {1} entries)"};
inline constexpr Message WAITING_FOR_SIGNALS {u"vxlog.waiting-for-signals", "waiting for signals"};

} // namespace vxlog
