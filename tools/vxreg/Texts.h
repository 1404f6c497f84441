#pragma once

#include "common/Messages.h"

// The messages of vxreg about component libraries.

namespace vxreg {

using vxtools::Message;

inline constexpr Message NO_LIBRARY {u"vxreg.no-library", "is not a shared library"};
inline constexpr Message OTHER_MACHINE {u"vxreg.other-machine", "is a library for another machine"};
inline constexpr Message TRUNCATED {u"vxreg.truncated", "is truncated, or its table of symbols is damaged"};

inline constexpr Message NOT_EXPORTED {
    u"vxreg.not-exported", "does not export {0}; the macro VX_COMPONENT_LIBRARY defines it"};
inline constexpr Message UNIQUE_SYMBOLS {u"vxreg.unique-symbols",
    "{0} symbols are unique in a process and keep it loaded, for example {1}; compile with -fno-gnu-unique"};
inline constexpr Message MORE_EXPORTED {u"vxreg.more-exported",
    "hint: exports {0} more symbols, for example {1}; hide them with a version script, as vx_add_component does"};

inline constexpr Message CANNOT_LOAD {u"vxreg.cannot-load", "cannot be loaded: {0}"};
inline constexpr Message NO_REGISTRATION {u"vxreg.no-registration", "its function VXRegisterServer failed: {0}"};
inline constexpr Message NO_CLASS {u"vxreg.no-class", "registers no class; the table of its module is empty"};
inline constexpr Message NO_PATH {u"vxreg.no-path", "class {0} is registered without a library; use a DllModule"};
inline constexpr Message NO_OBJECT {u"vxreg.no-object", "no object of class {0} ({1}) can be created: {2}"};
inline constexpr Message SAME_CLASS {
    u"vxreg.same-class", "the names {0} and {1} both have class {2}; give each class its own identifier"};
inline constexpr Message SAME_NAME {u"vxreg.same-name", "the name {0} belongs to classes {1} and {2}"};
inline constexpr Message CLASS_IN_USE {
    u"vxreg.class-in-use", "class {0} is registered for {1}; unregister that library, or use a new identifier"};
inline constexpr Message NAME_IN_USE {
    u"vxreg.name-in-use", "the name {0} is registered for class {1}; unregister that class, or use another name"};
inline constexpr Message LEAVES_KEY {u"vxreg.leaves-key", "its function VXUnregisterServer does not remove {0}"};

inline constexpr Message SAYS_IN_USE {u"vxreg.says-in-use",
    "says that it is in use, although no object is left; who called AddRef of its module without Release?"};
inline constexpr Message STAYS_LOADED {u"vxreg.stays-loaded",
    "stays loaded after it was closed; look for unique symbols, -z nodelete, and threads with destructors"};
inline constexpr Message THREAD_LEFT {
    u"vxreg.thread-left", "leaves a thread that still runs; end it first, or keep the library loaded by AddRef"};

inline constexpr Message CRASHED {u"vxreg.crashed", "ends the process by signal {1} ({2}) {0}"};
inline constexpr Message ENDED {u"vxreg.ended", "ends the process with status {1} {0}"};
inline constexpr Message STUCK {u"vxreg.stuck", "does not return within {1} seconds {0}"};
inline constexpr Message WHILE_LOADED {u"vxreg.while-loaded", "while it is loaded"};
inline constexpr Message WHILE_REGISTERED {u"vxreg.while-registered", "while it registers its classes"};
inline constexpr Message WHILE_CREATED {u"vxreg.while-created", "while an object of class {0} is created or released"};
inline constexpr Message WHILE_UNREGISTERED {u"vxreg.while-unregistered", "while it unregisters its classes"};
inline constexpr Message WHILE_UNLOADED {u"vxreg.while-unloaded", "while it is unloaded, or after that"};

inline constexpr Message NO_PROBLEM {u"vxreg.no-problem", "no problem was found"};
inline constexpr Message HAVE_PROBLEMS {u"vxreg.have-problems", "{0} of {1} have problems"};
inline constexpr Message LIBRARIES {u"vxreg.libraries", "component libraries"};

inline constexpr Message NO_MACHINE {u"vxreg.no-machine", "VXSYS4_MACHINE_REGISTRY says that there is none"};
inline constexpr Message MACHINE {u"vxreg.machine", "the registry of all users"};

} // namespace vxreg
