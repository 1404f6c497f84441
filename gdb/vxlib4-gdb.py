"""Printers for gdb: strings show their text, collections their elements, numbers their digits, locks their names.

gdb loads this file by itself for an installed library. Otherwise: source vxlib4-gdb.py
They read memory and call nothing, so that they work on a core file too. If the library has no debug information, the types
come from a file that is installed with it.
"""
import os
import re

import gdb
import gdb.printing

MOST_PARENTS = 20
MOST_DIGITS = 4000
SHOWN_DIGITS = 100
LIBRARY = "libvxlib4.so"
TYPES = "vxlib4/gdb-types.o"  # beside the library


def field_of(value, name):
    """The member `name` of an object or of one of its bases; None if it has none."""
    for field in value.type.strip_typedefs().fields():
        if field.name == name:
            return value[field]
    for field in value.type.strip_typedefs().fields():
        if field.is_base_class:
            found = field_of(value[field], name)
            if found is not None:
                return found
    return None


def number_of(value):
    """The number in a plain or an atomic integer."""
    value_type = value.type.strip_typedefs()
    return int(value["_M_i"] if value_type.code == gdb.TYPE_CODE_STRUCT else value)


def pointers_in(value, name):
    """The members `name` of an object and of all its bases that are pointers."""
    for field in value.type.strip_typedefs().fields():
        if field.is_base_class:
            yield from pointers_in(value[field], name)
        elif field.name == name and value[field].type.strip_typedefs().code == gdb.TYPE_CODE_PTR:
            yield value[field]


def pointer_in(value):
    """The pointer in a plain, an atomic or an owning pointer."""
    if value.type.strip_typedefs().code != gdb.TYPE_CODE_STRUCT:
        return value
    atomic = field_of(value, "_M_b")
    if atomic is not None:
        return atomic["_M_p"]
    return next(pointers_in(field_of(field_of(value, "_M_t"), "_M_t"), "_M_head_impl"))


def most_elements():
    return gdb.parameter("print elements") or 1 << 30


def read_text(address, length):
    shown = min(length, most_elements())
    if shown <= 0:
        return ""
    memory = gdb.selected_inferior().read_memory(address, 2 * shown)
    text = memory.tobytes().decode("utf-16-le", "replace")
    return text + "..." if shown < length else text


def whole(pointer):
    """The object at a pointer to one of its bases, with the class of the object."""
    return pointer.cast(pointer.dynamic_type).dereference()


def is_nameless(pointer):
    """Whether the class of an object is in the library, and known only to debug information."""
    table = int(pointer.cast(gdb.lookup_type("void").pointer().pointer()).dereference())
    library = os.path.basename(gdb.solib_name(table) or "")
    return library.startswith(LIBRARY) and gdb.execute(f"info symbol {table:#x}", to_string=True).startswith("No symbol")


def elements_of(vector):
    """The elements of a std::vector with any allocator."""
    start = vector["_M_impl"]["_M_start"]
    for index in range(int(vector["_M_impl"]["_M_finish"] - start)):
        yield start[index]


def brief(pointer):
    """The object that a pointer leads to: its value if it has a short one, otherwise its class and address."""
    if int(pointer) == 0:
        return "null"
    value = whole(pointer)
    printer = lookup(value)
    return value if printer is not None else f"{value.type.strip_typedefs()} at {int(pointer):#x}"


class Text:
    def __init__(self, value):
        self.value = value

    def display_hint(self):
        return "string"


class StringPrinter(Text):
    def to_string(self):
        return text_of_buffer(self.value["m_buffer"]["m_object"])


def text_of_buffer(pointer):
    if int(pointer) == 0:
        return ""
    buffer = whole(pointer)
    storage = field_of(buffer, "m_storage")
    storage = buffer if storage is None else storage
    data, length = field_of(storage, "m_data"), field_of(storage, "m_length")
    if data is None or length is None:
        if is_nameless(pointer):
            return ""  # only the buffer that empty strings share has a hidden class
        return f"(in a buffer of the class {buffer.type})"
    return read_text(int(pointer_in(data)), number_of(length) - 1)  # the last unit is the terminator


class Str1Printer(Text):
    def to_string(self):
        buffer = self.value["m_buffer"]
        if int(buffer) == 0:
            return ""
        return read_text(int(buffer["m_data"]) + 2 * int(self.value["m_offset"]), int(self.value["m_length"]))


class ReferencePrinter:
    def __init__(self, value):
        self.pointer = value["m_object"]

    def to_string(self):
        return "null" if int(self.pointer) == 0 else "reference to"

    def children(self):
        if int(self.pointer) != 0:
            yield "object", brief(self.pointer)


class Elements:
    """A list or a set. `items` gives pointers."""

    def __init__(self, value):
        self.value = value

    def name(self):
        return str(self.value.type.strip_typedefs())

    def to_string(self):
        return f"{self.name()} of size {self.size()}"

    def children(self):
        for index, pointer in enumerate(self.items()):
            yield f"[{index}]", brief(pointer)

    def display_hint(self):
        return "array"


class ArrayListPrinter(Elements):
    def size(self):
        return int(self.value["m_size"])

    def items(self):
        first = pointer_in(self.value["m_elements"])
        for index in range(self.size()):
            yield first[index]


class LinkedListPrinter(Elements):
    def size(self):
        return sum(1 for _ in self.nodes())

    def nodes(self):
        pointer_type = gdb.lookup_type("void").pointer().pointer()
        head = self.value["m_nodes"]["_M_impl"]["_M_node"]
        end = int(head.address)
        node = int(head["_M_next"])
        while node != end:
            yield node
            node = int(gdb.Value(node).cast(pointer_type).dereference())

    def items(self):
        links = 2 * gdb.lookup_type("void").pointer().sizeof
        element = self.value["m_nodes"].type.strip_typedefs().template_argument(0).pointer()
        for node in self.nodes():
            yield gdb.Value(node + links).cast(element).dereference()["m_object"]


class Entries:
    """A map. `entries` gives keys and values."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return f"{self.value.type.strip_typedefs()} of size {self.size()}"

    def children(self):
        for index, (key, value) in enumerate(self.entries()):
            yield f"[{2 * index}]", key
            yield f"[{2 * index + 1}]", value

    def display_hint(self):
        return "map"


class TableMapPrinter(Entries):
    """The maps of objects. Their table has nodes side by side, and chains of indexes from bucket 0 up."""

    def size(self):
        return int(self.value["m_table"]["m_size"])

    def entries(self):
        table = self.value["m_table"]
        start = table["m_nodes"]["_M_impl"]["_M_start"]
        for head in elements_of(table["m_heads"]):
            index = int(head)
            while index != -1:
                yield self.entry(start[index])
                index = int(start[index]["next"])


class HashMapPrinter(TableMapPrinter):
    def entry(self, node):
        item = node["item"]
        made = item["m_entry"]
        value = item["m_value"] if int(made) == 0 else whole(made)["m_value"]["m_object"]
        return brief(item["m_key"]), brief(value)


class StringHashMapPrinter(TableMapPrinter):
    def entry(self, node):
        return node["item"]["key"], brief(node["item"]["value"]["m_object"])


class IntegerHashMapPrinter(TableMapPrinter):
    def entry(self, node):
        key = number_of(node["hash"])
        value = field_of(node["item"], "value")
        value = node["item"] if value is None else value
        return key - (1 << 32) if key >> 31 else key, brief(value["m_object"])


class Str1HashMapPrinter(Entries):
    def size(self):
        return int(self.value["m_size"])

    def entries(self):
        buckets = int(field_of(self.value["m_order"], "m_capacity"))
        first = pointer_in(self.value["m_table"])
        for bucket in range(buckets):
            node = pointer_in(first[bucket])
            while int(node) != 0:
                yield node["key"], node["value"]
                node = pointer_in(node["next"])


class HashSetPrinter(Elements):
    def map(self):
        return self.value["m_map"]["m_object"].dereference()

    def size(self):
        return int(self.map()["m_table"]["m_size"])

    def children(self):
        for index, (key, _) in enumerate(HashMapPrinter(self.map()).entries()):
            yield f"[{index}]", key


class WrapperPrinter:
    """A typed collection, which shows the one that it wraps."""

    def __init__(self, value):
        for name in ("m_collection", "m_list", "m_set", "m_map"):
            wrapped = field_of(value, name)
            if wrapped is not None:
                break
        self.name = str(value.type.strip_typedefs())
        self.wrapped = None if wrapped is None else wrapped["m_object"]

    def to_string(self):
        return f"{self.name} over"

    def children(self):
        yield "object", brief(self.wrapped)


def integer_of(value):
    size = int(value["m_size"])  # in bytes
    address = int(pointer_in(value["m_data"]))
    memory = gdb.selected_inferior().read_memory(address, size).tobytes() if size > 0 else b""
    number = int.from_bytes(memory, "little")
    return -number if value["m_negative"] else number


def digits_of(number):
    """The digits of a natural number. Of a very long one only the first, since Python refuses to print it."""
    count = int(number.bit_length() * 0.30103) + 1  # at least
    if count <= MOST_DIGITS:
        return str(number)
    first = str(number // 10 ** (count - SHOWN_DIGITS))
    return f"{first}... of {count - SHOWN_DIGITS + len(first)} digits"


class BigIntegerPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        number = integer_of(self.value)
        return ("-" if number < 0 else "") + digits_of(abs(number))


class BigDecimalPrinter(BigIntegerPrinter):
    def to_string(self):
        number, scale = integer_of(self.value["m_unscaled"]), int(self.value["m_scale"])
        sign, digits = "-" if number < 0 else "", digits_of(abs(number))
        if not digits.isdigit() or abs(scale) > MOST_DIGITS:
            return f"{sign}{digits}, scale {scale}"
        digits = digits.rjust(scale + 1, "0")
        text = digits if scale <= 0 else f"{digits[:-scale]}.{digits[-scale:]}"
        return sign + text + ("0" * -scale if scale < 0 else "")


class BoxPrinter:
    def __init__(self, value):
        self.value = field_of(value, "m_value")

    def to_string(self):
        value = self.value
        return int(value) if value.type.strip_typedefs().code == gdb.TYPE_CODE_INT else value


class GuidPrinter:
    def __init__(self, value):
        inner = field_of(value, "m_guid")
        self.value = value if inner is None else inner

    def to_string(self):
        tail = "".join(f"{int(self.value['Data4'][index]):02X}" for index in range(8))
        return (f"{{{int(self.value['Data1']):08X}-{int(self.value['Data2']):04X}-{int(self.value['Data3']):04X}"
                f"-{tail[:4]}-{tail[4:]}}}")


class LockPrinter:
    """A lock or a signal: its label, and whether a thread holds it if that is known."""

    def __init__(self, value):
        self.name = str(value.type.strip_typedefs().unqualified())
        self.handle = field_of(value, "m_handle")

    def to_string(self):
        if self.handle is None or int(self.handle) == 0:
            return self.name
        # The header only declares the type.
        native = whole(self.handle.cast(gdb.lookup_type("VXHandleTag").pointer()))
        label = field_of(native, "label")
        text = self.name if int(label) == 0 else f'{self.name} "{label.string(errors="replace")}"'
        if native.type.name == "VXHandleTag" and re.search("Mutex|ReaderWriterLock|Condition", self.name):
            return text + ", holder unknown without the debug information of libvxsys4"
        holder = field_of(native, "m_holder")
        if holder is None:
            holder = field_of(native, "m_writer")
        else:
            holder = holder["m_thread"]
        return text + ", held" if holder is not None and number_of(holder) != 0 else text


class ExceptionPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        text = str(self.value.type.strip_typedefs().unqualified())
        result = field_of(self.value, "m_result")
        if result is not None:
            text += f" {int(result) & 0xFFFFFFFF:#010x}"
        description = StringPrinter(field_of(self.value, "m_description")).to_string()
        return f'{text} "{description}"'


PRINTERS = (
    (r"^vx::String$", StringPrinter),
    (r"^vx::Str1(Wrap|Static|Copy|Embedded|Local|Fixed<.*>)?$", Str1Printer),
    (r"^vx::Reference<.*>$", ReferencePrinter),
    (r"^vx::collections::vorb::ArrayList$", ArrayListPrinter),
    (r"^vx::collections::vorb::LinkedList$", LinkedListPrinter),
    (r"^vx::collections::vorb::HashMap$", HashMapPrinter),
    (r"^vx::collections::vorb::HashSet$", HashSetPrinter),
    (r"^vx::collections::StringHashMap$", StringHashMapPrinter),
    (r"^vx::collections::IntegerHashMap$", IntegerHashMapPrinter),
    (r"^vx::Str1HashMap(LC)?<.*>$", Str1HashMapPrinter),
    (r"^vx::collections::(Collection|List|Set|Map)<.*>$", WrapperPrinter),
    (r"^vx::math::BigInteger$", BigIntegerPrinter),
    (r"^vx::math::BigDecimal$", BigDecimalPrinter),
    (r"^vx::(U?Integer(8|16|32|64)|Float|Double)$", BoxPrinter),
    (r"^(vx::util::Guid|_GUID)$", GuidPrinter),
    (r"^vx::(sync::(Mutex|ReaderWriterLock|Semaphore|Condition|Event|Gate)|ipc::Semaphore)$", LockPrinter),
)
PRINTERS = tuple((re.compile(pattern), printer) for pattern, printer in PRINTERS)


def is_exception(value_type):
    for _ in range(MOST_PARENTS):
        if value_type.name == "vx::Exception":
            return True
        bases = [field for field in value_type.fields() if field.is_base_class]
        if not bases:
            return False
        value_type = bases[0].type.strip_typedefs()
    return False


def lookup(value):
    value_type = value.type
    if value_type.code == gdb.TYPE_CODE_REF:
        value, value_type = value.referenced_value(), value_type.target()
    value_type = value_type.unqualified().strip_typedefs()
    if value_type.code != gdb.TYPE_CODE_STRUCT or value_type.name is None:
        return None
    for pattern, printer in PRINTERS:
        if pattern.match(value_type.name):
            return printer(value)
    return ExceptionPrinter(value) if is_exception(value_type) else None


def is_complete(name):
    try:
        return len(gdb.lookup_type(name).fields()) > 0
    except gdb.error:
        return False


def add_types(library):
    """Adds the types of a library without debug information."""
    if not os.path.basename(library.filename).startswith(LIBRARY) or is_complete("vx::util::RWCharBuffer"):
        return
    types = os.path.join(os.path.dirname(library.filename), TYPES)
    if os.path.exists(types):
        gdb.execute(f'add-symbol-file "{types}"', to_string=True)
    else:
        gdb.write(f"vxlib4: objects are shown as <incomplete type>: {library.filename} has no debug information, and "
                  f"{types} does not exist\n", gdb.STDERR)


lookup.__name__ = "vxlib4"
gdb.printing.register_pretty_printer(gdb.current_objfile(), lookup, replace=True)
if gdb.current_objfile() is not None:
    add_types(gdb.current_objfile())
else:
    for objfile in gdb.objfiles():
        add_types(objfile)
    gdb.events.new_objfile.connect(lambda event: add_types(event.new_objfile))
