"""Writes the images of the command-line tests into the current folder."""
import json

UNIT = {"alias": "Logical Unit Alias", "vendor": "Vendor Identification", "product": "Product Identification",
        "algorithm": "Load Balancing Algorithm", "batch": "Batch Count"}


def unit(number, identifier=None, paths=(), kind=0, **more):
    properties = {UNIT[name]: value for name, value in more.items()}
    if kind is not None:
        properties["Peripheral Device Type"] = kind
    if identifier is not None:
        properties["Logical Unit Unique Identifier"] = {"$data": identifier}
    return {"id": number, "class": "KsSCSIMultipathedLogicalUnit", "parents": list(paths), "properties": properties}


def path(number, identifier=None, state=0, interconnect=None):
    entry = {"id": number, "class": "KsSCSIHierarchicalLogicalUnit", "parents": [], "properties": {}}
    if identifier is not None:
        entry["properties"]["Logical Unit Path Identifier"] = {"$data": identifier}
    if interconnect is not None:
        entry["properties"]["Protocol Characteristics"] = {"Physical Interconnect": interconnect}
    if state is not None:
        entry["statistics"] = {"sent": 0, "received": 0, "commands": 0, "state": state}
    return entry


def medium(number, parent, name, device, size):
    disk = {"volumeName": name, "bsdName": device, "mediaSize": size}
    return {"id": number, "class": "KsMedia", "parents": [parent], "properties": {"Leaf": True, "Content": "Data"},
            "disk": {key: value for key, value in disk.items() if value is not None}}


def write(name, *entries, **more):
    with open(name + ".json", "w", encoding="utf-8") as file:
        json.dump({"generation": 1, **more, "entries": entries}, file)


ROUND_ROBIN = {"algorithm": "Modified Round Robin", "batch": 16}
FINANCE = {"alias": "Finance", "vendor": "ACME", "product": "Array", **ROUND_ROBIN}
SIZES = [("zero", 0), ("last MB", 999999999), ("first GB", 10**9), ("last GB", 10**12), ("first TB", 10**12 + 1),
         ("largest", 2**63 - 1), ("too large", 2**63), ("negative", -2500000.5), ("smallest", -2**63)]

write("empty")
write("ordinary-user", effectiveUser=1000)
write("thousand", *(unit(number) for number in range(1, 1001)))
write("list",
      unit(100, "600A0B800000FF01", **FINANCE),
      unit(110, alias="abcdefghijklmnopqrst", algorithm="Least Queue Depth"),
      unit(120, "000102030405060708090A0B0C0D0E0F1011", kind=5, vendor="Sixteen-letters!", product="Seventeen-letters",
           algorithm="Least Bytes"),
      unit(130, kind=3), unit(140, kind=12), unit(150, kind=None),
      unit(160, "16", alias="Größe 😀 é", vendor="日本\x85", product="a\tb\nc\x1b[1m\x7f", algorithm="Fastest First"),
      unit(170, "", alias="", vendor="x\0~", product="ä" * 16 + "Z"),
      unit(180, "18", alias=18, vendor=True, product={"$data": "18"}, algorithm=16))
write("info",
      path(201, "01", 0, "Fibre Channel Interface"), path(202, "02", 128, "Serial Attached SCSI"),
      path(203, "000102030405060708090A0B0C0D0E0F", 1, "fibre channel interface"),
      path(204, None, 2, "Fibre Channel Interface 2"), path(205, "05", 15), path(206, "06", 130, "iSCSI"),
      path(207, "07", None), unit(100, "AA01", range(201, 208), **FINANCE),
      *(medium(301 + at, 100, name, f"disk1s{at + 1}", size) for at, (name, size) in enumerate(SIZES)),
      medium(310, 100, "A volume whose name has 44 characters, Größe", "disk10s10-longer", None),
      medium(311, 100, "no device", None, 500107862016),
      unit(110, "BB02"),
      path(211, "11"), path(212, "12", 2), unit(120, "CC03", [211], alias="Earlier"), unit(130, "CC03", [212], alias="Later"),
      medium(321, 120, "Early", "disk2", 1500000))
MODIFY = [path(201, "0A"), path(202, "0B", 2), path(203, "0C"), unit(100, "AA01", [201, 202], **ROUND_ROBIN),
          unit(110, "BB02", [203], algorithm="Least Queue Depth"), unit(120, "CC03"), unit(130, "CC03"), unit(140, "AB" * 127)]
write("modify", *MODIFY)
for name, statuses in (("10", [-16, 0]), ("01", [0, -16]), ("11", [-16, -16])):
    write("refusing" + name, *MODIFY, writeStatuses=statuses)
