#pragma once

#include "common/Messages.h"

// The messages of vxreg.

namespace vxreg {

using vxtools::Message;

inline constexpr Message NOT_FOUND {u"vxreg.not-found", "not found"};
inline constexpr Message STORE_DENIED {u"vxreg.store-denied",
    "denied; your registry and that of all users must belong to you or to root, and nobody else may write there"};
inline constexpr Message NO_FOLDER_MADE {u"vxreg.no-folder-made", "the folder {0} cannot be made: {1}"};
inline constexpr Message NAME_TOO_LONG {u"vxreg.name-too-long", "a name is longer than 255 characters"};
inline constexpr Message NO_NAME {u"vxreg.no-name", "not a name, or VXSYS4_REGISTRY is not a full path"};
inline constexpr Message STORE_DAMAGED {u"vxreg.store-damaged", "its file in the registry is damaged"};
inline constexpr Message DISK_FULL {u"vxreg.disk-full", "the disk is full"};
inline constexpr Message OUT_OF_MEMORY {u"vxreg.out-of-memory", "out of memory"};
inline constexpr Message NO_FILE {u"vxreg.no-file", "no such file"};
inline constexpr Message NO_FOLDER {u"vxreg.no-folder", "no such folder"};
inline constexpr Message NOT_TRUSTED {u"vxreg.not-trusted",
    "not trusted; it and the folders above it must belong to you or to root, and nobody else may write there"};
inline constexpr Message NO_FULL_PATH {u"vxreg.no-full-path", "not a full path"};
inline constexpr Message NOT_LOADABLE {u"vxreg.not-loadable", "cannot be loaded; something that it needs is missing"};
inline constexpr Message NO_WHOLE_LIBRARY {u"vxreg.no-whole-library", "not a library for this machine, or truncated"};
inline constexpr Message NO_COMPONENT {
    u"vxreg.no-component", "not a component library; it does not export VXGetClassObject"};
inline constexpr Message LACKS_CLASS {u"vxreg.lacks-class", "does not have this class"};
inline constexpr Message NO_HIVE {u"vxreg.no-hive", "the path begins with no hive; vxreg list prints the hives"};
inline constexpr Message NO_SUCH_CLASS {u"vxreg.no-such-class", "no class has this name; is its library registered?"};
inline constexpr Message NO_COMMAND {u"vxreg.no-command", "a command is missing: {0}"};
inline constexpr Message NO_SUCH_COMMAND {u"vxreg.no-such-command", "unknown command {0}; the commands are {1}"};
inline constexpr Message OTHER_ARGUMENTS {u"vxreg.other-arguments", "the arguments of {0} are {1}"};

inline constexpr Message NO_UTF_8 {u"vxreg.no-utf-8", "text that is not UTF-8"};
inline constexpr Message NO_NUMBER {u"vxreg.no-number", "\"{0}\" is not a whole number from 0 to {1}"};
inline constexpr Message NO_HEX {u"vxreg.no-hex", "\"{0}\" is not a hexadecimal number"};
inline constexpr Message NO_QUOTE {u"vxreg.no-quote", "a quotation mark (\") is missing"};
inline constexpr Message LONE_BACKSLASH {
    u"vxreg.lone-backslash", "only \\, \", n, r, t, or u and four hexadecimal digits may follow a \\"};
inline constexpr Message LONE_PERCENT {u"vxreg.lone-percent", "two hexadecimal digits must follow a %"};
inline constexpr Message AFTER_TEXT {u"vxreg.after-text", "there is more after the text in quotation marks"};
inline constexpr Message NO_VALUE {
    u"vxreg.no-value", "the value is neither a text in quotation marks nor u32:N, u64:N or hex:DIGITS"};
inline constexpr Message HALF_BYTE {u"vxreg.half-byte", "an odd number of hexadecimal digits"};
inline constexpr Message NO_TYPE {u"vxreg.no-type", "unknown type {0}; the types are text, u32, u64 and hex"};
inline constexpr Message NO_BRACKET {u"vxreg.no-bracket", "a ] is missing"};
inline constexpr Message NO_KEY {u"vxreg.no-key", "a value without a key above it"};
inline constexpr Message NO_EQUALS {u"vxreg.no-equals", "a = is missing"};
inline constexpr Message IN_LINE {u"vxreg.in-line", "line {0}: {1}"};
inline constexpr Message VALUE_OF {u"vxreg.value-of", "{0}, value \"{1}\""};
inline constexpr Message DEFAULT_VALUE_OF {u"vxreg.default-value-of", "{0}, default value"};
inline constexpr Message CLASS_IS {u"vxreg.class-is", "class    {0}"};
inline constexpr Message LIBRARY_IS {u"vxreg.library-is", "library  {0}"};
inline constexpr Message OBJECT_CREATED {u"vxreg.object-created", "an object was created"};

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
inline constexpr Message CLASS_IN_USE {u"vxreg.class-in-use",
    "class {0} is registered for {1}; unregister that library, use a new identifier, or replace it "
    "with vxreg --force register"};
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

inline constexpr Message NOT_REGISTERED {u"vxreg.not-registered", "is not registered {0}"};
inline constexpr Message FOR_USER {u"vxreg.for-user", "for the user {0}"};
inline constexpr Message FOR_ALL_USERS {u"vxreg.for-all-users", "for all users"};
inline constexpr Message IN_REGISTRY {u"vxreg.in-registry", "in the registry {0}"};
inline constexpr Message ONLY_MACHINE_HAS {
    u"vxreg.only-machine-has", "is only in the registry of all users; root can remove it there with --machine"};
inline constexpr Message ONLY_OWNER {u"vxreg.only-owner", "only the owner may change {0}"};
inline constexpr Message STAYS {u"vxreg.stays", "is a hive, which cannot be deleted"};
inline constexpr Message NO_MACHINE {u"vxreg.no-machine", "VXSYS4_MACHINE_REGISTRY says that there is none"};
inline constexpr Message MACHINE {u"vxreg.machine", "the registry of all users"};

inline constexpr Message HELP_HEAD {u"vxreg.help",
    "Usage: vxreg [OPTION]... COMMAND [ARGUMENT]...\n"
    "Shows and changes the registry, and registers component libraries in it.\n"
    "\n"
    "  register LIBRARY        let a component library write its classes into the\n"
    "                          registry\n"
    "  unregister LIBRARY      let it remove them\n"
    "  resolve PROGID          print the class and the library that a name leads to,\n"
    "                          and create an object\n"
    "  verify LIBRARY...       try component libraries without registering them, and\n"
    "                          print what is wrong with them\n"
    "  list [KEY]              print the keys directly below KEY, and its values;\n"
    "                          without KEY, the hives\n"
    "  get KEY [NAME]          print a value: a text as it is, bytes in hexadecimal\n"
    "  set KEY NAME VALUE [TYPE]\n"
    "                          set a value; TYPE is text (the default), u32, u64 or\n"
    "                          hex\n"
    "  delete KEY [NAME]       delete a value; without NAME, KEY with everything\n"
    "                          below it\n"
    "  export KEY [FILE]       write KEY with everything below it as text\n"
    "  import [FILE]           set what such a text says, if all of it can be\n"
    "                          understood"};
inline constexpr Message HELP_FOOT {u"vxreg.help.more",
    "KEY is a path such as VX_HKEY_USER\\Software\\X, also with \"/\" instead of \"\\\",\n"
    "that begins with one of these hives:\n"
    "  {0}\n"
    "VX_HKEY_CLASSES and VX_HKEY_CONFIG are short for those that end in _32.\n"
    "\n"
    "NAME is empty for the default value. FILE is standard output or standard input\n"
    "where it is missing or \"-\". What the registry of the user does not have is read\n"
    "from that of all users, which only --machine changes. The variables\n"
    "VXSYS4_REGISTRY and VXSYS4_MACHINE_REGISTRY name other folders for the two.\n"
    "\n"
    "The exit status is 0 for success, 1 for a failure, 2 for a wrong command line."};

} // namespace vxreg
