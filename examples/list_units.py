#!/usr/bin/python3
"""Lists the logical units with their paths and statistics, through the C interface of libtavrenix."""

import ctypes
from ctypes import CDLL, c_bool, c_char_p, c_size_t, c_uint64, c_void_p

lib = CDLL("libtavrenix.so.0")
for name, result, arguments in (
        ("MPIOCopyLogicalUnits", c_void_p, []),
        ("MPIOLogicalUnitCopyProperties", c_void_p, [c_void_p]),
        ("MPIOLogicalUnitCopyStatistics", c_void_p, [c_void_p]),
        ("MPIOLogicalUnitCopyPaths", c_void_p, [c_void_p]),
        ("MPIOLogicalUnitPathCopyProperties", c_void_p, [c_void_p]),
        ("MPIOLogicalUnitPathCopyStatistics", c_void_p, [c_void_p]),
        ("ObRelease", None, [c_void_p]),
        ("ObArrayGetCount", c_size_t, [c_void_p]),
        ("ObArrayGetValueAtIndex", c_void_p, [c_void_p, c_size_t]),
        ("ObDictionaryGetValue", c_void_p, [c_void_p, c_void_p]),
        ("ObStringGetUTF8", c_char_p, [c_void_p]),
        ("ObNumberGetUInt64", c_bool, [c_void_p, ctypes.POINTER(c_uint64)])):
    getattr(lib, name).restype, getattr(lib, name).argtypes = result, arguments


def value(dictionary, key):
    return lib.ObDictionaryGetValue(dictionary, c_void_p.in_dll(lib, key))


def text(dictionary, key):
    found = lib.ObStringGetUTF8(value(dictionary, key))
    return found.decode() if found is not None else "-"


def number(dictionary, key):
    result = c_uint64()
    return result.value if lib.ObNumberGetUInt64(value(dictionary, key), result) else "-"


def elements(array):
    return [lib.ObArrayGetValueAtIndex(array, index) for index in range(lib.ObArrayGetCount(array))]


def line(handle, kind, names):
    properties = getattr(lib, f"{kind}CopyProperties")(handle)
    statistics = getattr(lib, f"{kind}CopyStatistics")(handle)
    sent, received, commands = (number(statistics, f"k{kind}Statistics{name}Key")
                                for name in ("BytesSent", "BytesReceived", "TotalCommands"))
    words = [text(properties, f"k{kind}{name}Key") for name in names]
    lib.ObRelease(properties)
    lib.ObRelease(statistics)
    return f"{' '.join(words)}: sent {sent}, received {received}, commands {commands}"


units = lib.MPIOCopyLogicalUnits()
for unit in sorted(elements(units), key=lambda each: line(each, "MPIOLogicalUnit", ["Identifier"])):
    print(line(unit, "MPIOLogicalUnit", ["Identifier", "Alias"]))
    paths = lib.MPIOLogicalUnitCopyPaths(unit)
    for path_line in sorted(line(path, "MPIOLogicalUnitPath", ["Identifier", "State"]) for path in elements(paths)):
        print("  " + path_line)
    lib.ObRelease(paths)
lib.ObRelease(units)
