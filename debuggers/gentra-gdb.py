# Gentra, copyright the Gentra authors.
# SPDX-License-Identifier: MIT
"""How gdb shows Gentra's types.

Installed beside the library's name, so that gdb loads it together with the library. Members, pools and selections are
decoded by the layout of the member's pool, which only the library's debug symbols describe (the package
libgentra1-dbgsym); without them a member is shown as an address. `print /r` shows what is really there.
"""

import itertools
import sys

import gdb
import gdb.printing

VALUE, VECTOR, MEMBERSELECTION, BEHAVIOUR, DATAREFERENCE, FIXEDSIZEDATA, TEXT = range(1, 8)
LONGEST_TEXT = 10000  # what is longer is no name, but not constructed
LONGEST_LIST = 10000  # what is longer is not constructed either
MOST_BYTES = 1 << 20  # of a datum that is shown

# What reading something raises that is not constructed yet, or no more.
NOT_THERE = (gdb.error, RuntimeError, OverflowError, MemoryError, AttributeError)


# Reading the library's and the standard library's structures.

def size(vector):
    return int(vector["_M_impl"]["_M_finish"] - vector["_M_impl"]["_M_start"])


def item(vector, index):
    return vector["_M_impl"]["_M_start"][index]


def elements(vector):
    return (item(vector, index) for index in range(size(vector)))


def listed(container):
    """The elements of a deque, or the keys and values of a map by turns, as the standard library's printers see them."""
    printer = gdb.default_visualizer(container)
    return [value for _, value in itertools.islice(printer.children(), LONGEST_LIST)] if printer else []


def printable(characters):
    """The text in characters that gdb can print; others are escaped."""
    charset = gdb.host_charset() if hasattr(gdb, "host_charset") else "ascii"
    return characters.encode(charset, "backslashreplace").decode(charset)


def text(string):
    """The characters of a std::string or Util::String."""
    length = min(int(string["_M_string_length"]), LONGEST_TEXT)
    letters = memory(int(string["_M_dataplus"]["_M_p"]), length)
    return printable(letters.decode("utf-8", errors="replace"))


def target(unique_pointer):
    """The pointer in a std::unique_ptr, which is all there is in one."""
    pointed = unique_pointer.type.strip_typedefs().template_argument(0)
    if pointed.code == gdb.TYPE_CODE_ARRAY:
        pointed = pointed.target()
    return unique_pointer.address.cast(pointed.pointer().pointer()).dereference()


def watched(weak):
    """The pointer in a Util::WeakPtr; 0 when its object has gone."""
    return weak["block"]["object"] if weak["block"] else 0


def known_pools():
    """Pointers to the pools that the main context knows."""
    try:
        context = gdb.parse_and_eval("Gentra::ContextManager::mainContext")
        if not context:
            return []
        registered = [watched(each["pool"]) for each in listed(context["poolsByID"])[1::2]]
        return [pool for pool in registered if pool]
    except NOT_THERE:
        return []


def layout(pool):
    """The pool's table of member properties, or None without debug symbols of the library."""
    try:
        table = target(pool["memberProperties"]).dereference()
        return table if table.type.fields() and table["recordSize"] >= 0 else None
    except NOT_THERE:
        return None


def holds(pool, address):
    """Whether a record in use of the pool begins at the address."""
    table = layout(pool)
    storage = target(table["storage"]) if table is not None else 0
    if not storage:
        return False
    record_size = int(storage["recordSize"])
    for block in elements(storage["blocks"]):
        offset = address - int(target(block["bytes"]))
        if 0 <= offset < int(block["recordCount"]) * record_size and offset % record_size == 0:
            return bool(target(block["inUse"])[offset // record_size])
    return False


def memory(address, length):
    if length > MOST_BYTES:
        raise MemoryError
    return bytes(gdb.selected_inferior().read_memory(address, length)) if length else b""


def named(name):
    return f'"{name}"' if name else "without a name"


def describe_vector(vector):
    return f'({float(vector["x"]):g}, {float(vector["y"]):g}, {float(vector["z"]):g})'


def describe_selection(selection):
    pool = watched(selection["basePool"])
    return f'{count(selection)} members of {named(text(pool["name"])) if pool else "no pool"}'


def datum(address, kind, length):
    """A datum of a member or pool, as text."""
    def read(name):
        return gdb.Value(address).cast(gdb.lookup_type(name).pointer()).dereference()

    if kind == VALUE:
        return f'{float(read("float")):g}'
    if kind == VECTOR:
        return describe_vector(read("Math::Vec3"))
    if kind in (MEMBERSELECTION, BEHAVIOUR, DATAREFERENCE, TEXT):
        pointer = int(read("unsigned long"))
        if pointer == 0:
            return "null"
        if kind == MEMBERSELECTION:
            found = gdb.Value(pointer).cast(gdb.lookup_type("Gentra::MemberSelection").pointer())
            return describe_selection(found.dereference())
        if kind == BEHAVIOUR:
            found = gdb.Value(pointer).cast(gdb.lookup_type("Gentra::Behaviour").pointer())
            return "behaviour " + named(text(found["name"]))
        if kind == TEXT:
            found = gdb.Value(pointer).cast(gdb.lookup_type("Gentra::TextProperty::Text").pointer())
            length = min(int(found["_M_string_length"]), LONGEST_TEXT)
            letters = memory(int(found["_M_dataplus"]["_M_p"]), 2 * length)
            order = "utf-16-le" if sys.byteorder == "little" else "utf-16-be"
            return '"' + printable(letters.decode(order, errors="replace")) + '"'
        return f"pointer {pointer:#x}"
    return "bytes " + memory(address, length).hex(" ")


def count(selection):
    end = selection["listEnd"].dereference()
    return int(end["before"]) + int(end["next"] - end["first"])


def entries(selection):
    """The members of a selection in order, also while its vector is not up to date; of a list in several pieces only
    with the library's debug symbols."""
    end = selection["listEnd"].dereference()
    try:
        members = target(selection["entries"])
        chunks, number, last = members["chunks"], int(members["firstChunk"]), int(members["lastChunk"])
    except NOT_THERE:
        chunks, number, last = None, 0, 0
    for _ in range(size(chunks) if chunks is not None else 0):  # what is not constructed may be a ring
        if number == last:
            break
        chunk = item(chunks, number)
        yield from (target(chunk["members"])[i] for i in range(int(chunk["size"])))
        number = int(chunk["next"])
    yield from (end["first"][i] for i in range(int(end["next"] - end["first"])))


# The printers.

class Member:
    def __init__(self, value):
        self.address = int(value["record"])
        self.pool = next((pool for pool in known_pools() if holds(pool, self.address)), None)

    def to_string(self):
        if self.address == 0:
            return "Member::NIL"
        of = f' of {named(text(self.pool["name"]))}' if self.pool is not None else ""
        return f"member{of} at {self.address:#x}"

    def children(self):
        if self.pool is None:
            return
        for place in elements(layout(self.pool)["places"]):
            address = self.address + int(place["offset"])
            yield text(place["property"]["name"]), datum(address, int(place["type"]), int(place["size"]))


class MemberSelection:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        active = int(self.value["activeMember"]["record"])
        return describe_selection(self.value) + (f", active at {active:#x}" if active else ", none active")

    def children(self):
        for index, member in enumerate(entries(self.value)):
            yield f"[{index}]", member


class MemberPool(MemberSelection):
    def to_string(self):
        pool = self.value
        table = layout(pool)
        of = f' of {int(table["recordSize"])} bytes' if table is not None else ""
        state = "compiled" if pool["compiled"] else "not compiled"
        return f'pool {named(text(pool["name"]))}, ID {int(pool["poolID"]["value"])}, {state}, ' \
               f'{count(pool)} members{of}'

    def children(self):
        properties = target(self.value["poolProperties"])
        try:
            table = target(properties["properties"])
        except NOT_THERE:
            table = 0  # without debug symbols of the library
        for held in listed(table.dereference()) if table else []:
            yield text(held["ptr"]["name"]), held
        yield from super().children()


class Property:
    def __init__(self, value):
        pointer = value.address  # gdb 13 loses its way when objects themselves are cast
        self.value = pointer.cast(pointer.dynamic_type).dereference()

    def to_string(self):
        value = self.value
        pool = watched(value["ownerPool"])
        of = f' of {named(text(pool["name"]))}' if pool else " of no pool"
        kind = value.type.name.split("::")[-1]
        at = f', at {int(value["dataOffset"])} in a record' if int(value["dataOffset"]) >= 0 else ""
        return f'{kind} {named(text(value["name"]))}{of}{at}, ID {int(value["propertyID"]["value"])}'

    def children(self):
        kind = int(self.value["type"])
        if kind == VALUE:
            yield "value", datum(int(self.value["value"].address), kind, 4)
        elif kind == VECTOR:
            yield "vector", datum(int(self.value["vector"].address), kind, 12)
        elif kind in (MEMBERSELECTION, TEXT) and any(f.name == "poolDatum" for f in self.value.type.fields()):
            yield "pool data", datum(int(self.value["poolDatum"].address), kind, 8)


class Behaviour:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        pool = watched(self.value["ownerPool"])
        of = f' of {named(text(pool["name"]))}' if pool else " of no pool"
        ready = "not ready" if self.value["disabled"] else "ready"
        return f'behaviour {named(text(self.value["name"]))}{of}, {ready}'

    def children(self):
        links = self.value["linkedProperties"]
        for index, slot in enumerate(elements(self.value["parameterInterface"])):
            linked = item(links, index)["ptr"] if index < size(links) else 0
            name = text(linked["name"]) if linked else "NULL"
            yield text(slot["name"]), "not linked" if name == "NULL" else f'linked to "{name}"'


class RefCountPtr:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        if not self.value["ptr"]:
            return "null"
        holders = int(self.value["count"]["count"])
        return "held once" if holders == 1 else f"held {holders} times"

    def children(self):
        pointer = self.value["ptr"]
        if pointer:
            yield "object", pointer.dereference()


class WeakPtr:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        pointer = watched(self.value)
        return f"watches {int(pointer):#x}" if pointer else "watches nothing"


class ShortID:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return str(int(self.value["value"]))


class EventType:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return f'{text(self.value["name"])}/{text(self.value["subName"])} ({int(self.value["subIndex"])})'


class Event:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        event = self.value
        return f'event {EventType(event["type"]).to_string()}, {int(event["param1"])}, {int(event["param2"])}, ' \
               f'about {int(event["subject"]):#x}'


class String:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return text(self.value)

    def display_hint(self):
        return "string"


class Vec3:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return describe_vector(self.value)


class Guarded:
    """A printer of an object that may not be constructed yet, or no more."""

    def __init__(self, kind, value):
        try:
            self.printer = kind(value)
        except NOT_THERE:
            self.printer = None

    def to_string(self):
        try:
            return self.printer.to_string()
        except NOT_THERE:
            return "not constructed, or without debug symbols"

    def children(self):
        try:
            yield from getattr(self.printer, "children", tuple)()
        except NOT_THERE:
            return

    def display_hint(self):
        return getattr(self.printer, "display_hint", lambda: None)()


def guarded(kind):
    return lambda value: Guarded(kind, value)


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("gentra")
    for name in ("Member", "MemberSelection", "MemberPool", "Behaviour"):
        collection.add_printer(name, f"^Gentra::{name}$", guarded(globals()[name]))
    collection.add_printer("Property", "^Gentra::[A-Za-z]*Property$", guarded(Property))
    for name in ("ShortID", "EventType", "Event", "String"):
        collection.add_printer(name, f"^Util::{name}$", guarded(globals()[name]))
    collection.add_printer("RefCountPtr", "^Util::RefCountPtr<.*>$", guarded(RefCountPtr))
    collection.add_printer("WeakPtr", "^Util::WeakPtr<.*>$", guarded(WeakPtr))
    collection.add_printer("Vec3", "^Math::Vec3$", guarded(Vec3))
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
