#pragma once

#include "common/Messages.h"

// What vxlogd says to the person who starts it or asks it. The messages of the running server are in English.

namespace vxlogd {

using vxtools::Message;

inline constexpr Message UNEXPECTED {u"vxlogd.unexpected", "unexpected argument \"{0}\""};
inline constexpr Message SETTINGS_STAY {u"vxlogd.settings-stay", "the settings stay: {0}"};

inline constexpr Message STRANGE_LINE {u"vxlogd.strange-line", "neither a set nor a setting: {0}"};
inline constexpr Message NO_SET {u"vxlogd.no-set", "has no set [vxlogd]"};
inline constexpr Message UNKNOWN_SET {u"vxlogd.unknown-set", "unknown set [{0}]; the settings are in [vxlogd]"};
inline constexpr Message BEFORE_FIRST_SET {u"vxlogd.before-first-set", "{0} stands before the first set"};
inline constexpr Message UNKNOWN_SETTING {u"vxlogd.unknown-setting", "unknown setting {0}"};

inline constexpr Message SET_TWICE {u"vxlogd.set-twice", "{0} is already set in line {1}"};

inline constexpr Message NO_NUMBER {u"vxlogd.no-number", "\"{0}\" is no number from {1} to {2}"};
inline constexpr Message NO_CHOICE {u"vxlogd.no-choice", "\"{0}\" is none of {1}"};
inline constexpr Message NO_MODE {
    u"vxlogd.no-mode", "\"{0}\" is no mode in octal digits, such as 640, in which the owner may write"};
inline constexpr Message NO_PLACE {
    u"vxlogd.no-place", "\"{0}\" is no host and port, such as 127.0.0.1:7580 or [::1]:0"};
inline constexpr Message NO_FOLDER {u"vxlogd.no-folder", "there is no folder {0}"};
inline constexpr Message EMPTY {u"vxlogd.empty", "the text is empty"};

inline constexpr Message ALWAYS_UTF_8 {u"vxlogd.always-utf-8", "a log of format {0} is in UTF-8"};
inline constexpr Message NOT_ROTATED {u"vxlogd.not-rotated", "an XML log is one document, which cannot be rotated"};
inline constexpr Message FORWARD_NEEDS_JSON {u"vxlogd.forward-needs-json", "forward needs format json"};
inline constexpr Message NEEDS_FORWARD {
    u"vxlogd.needs-forward", "forward-ack=brokers needs forward, the address of these brokers"};
inline constexpr Message NEED_CERTIFICATE {u"vxlogd.need-certificate", "tls-key and tls-client-ca need tls-cert"};
inline constexpr Message NEED_HTTP {u"vxlogd.need-http", "http-token and http-host need http"};
inline constexpr Message NEEDS_TOKEN {
    u"vxlogd.needs-token", "http: other machines reach {0}, so that it needs http-token"};
inline constexpr Message STAYS_FORWARDED {
    u"vxlogd.stays-forwarded", "log and format cannot change while the log is forwarded"};

inline constexpr Message NO_SERVER {
    u"vxlogd.no-server", "no vxlogd listens here; --log FILE or a PATH after --status names another one"};
inline constexpr Message NO_ANSWER {u"vxlogd.no-answer", "the server does not answer"};
inline constexpr Message NO_STATUS_SOCKET {u"vxlogd.no-status-socket", "the settings name none"};
inline constexpr Message SOCKET_IN_USE {u"vxlogd.socket-in-use", "another server uses it"};

} // namespace vxlogd
