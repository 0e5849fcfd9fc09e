#!/usr/bin/env python3
"""Writes the directories of sim/machines, each of which ZELMAR_PLATFORM_ROOT can name.

A machine is what its firmware and its driver set-up say: firmware/FACP and firmware/PPTT as raw ACPI tables, and
platform.json for services and registry values. Run it again after a change; the results are committed.
"""

import json
import pathlib
import struct

HEADER = struct.Struct("<4sIBB6s8sI4sI")  # signature, length, revision, checksum, OEM id, table id, OEM revision, ...
OEM_REVISION = 1
OEM_REVISION_405 = 0x8180  # this chip is known by its FACP alone

# Where both drivers lie; the build puts the simulated RPC client library into the directory that this becomes.
DRIVERS = "\\SystemRoot\\drivers"

# Name of the machine: the two identifiers in its PPTT, or None for the chip without one.
MACHINES = {
    "chip405": None,
    "chip435": (0x71, 0x1C1),
    "chip475": (0x76, 0x1E7),
    "chip497": (0x76, 0x1F1),
    "chip498": (0x76, 0x1F2),
    "chip538": (0x88, 0x22B),
    "chip662": (0xA1, 0x296),
    "chip693": (0xA8, 0x2B5),
    "unknown": (0x7F, 0x7F),
}


def table(signature, revision, oem_revision, body):
    """An ACPI table: the header, then the body, with a checksum that makes all bytes add up to 0."""
    fields = [signature, HEADER.size + len(body), revision, 0, b"ZANTSM", b"ZANTSIM ", oem_revision, b"SIM ", 1]
    raw = HEADER.pack(*fields) + body
    fields[3] = -sum(raw) & 0xFF
    return HEADER.pack(*fields) + body


def fixed_description_table(oem_revision):
    return table(b"FACP", 6, oem_revision, bytes(276 - HEADER.size))


def topology_table(first, second):
    # A processor node (type 0) whose one private resource is the identifier structure (type 2) right behind it. The
    # node must hold no byte equal to 2: readers look for the first one.
    node_length = 24
    node = struct.pack("<BBHIIIII", 0, node_length, 0, 1, 0, 0, 1, HEADER.size + node_length)
    identifier = struct.pack("<BBH4sQQHHH", 2, 30, 0, b"ZANT", first, second, 1, 0, 0)
    return table(b"PPTT", 2, OEM_REVISION, node + identifier)


def platform(name):
    """The NPU driver carries the RPC library on the newer chips; elsewhere the RPC driver does, from the same place."""
    instance = "ACPI\\KORNPU\\0"
    carries_rpc = name in ("chip538", "chip662", "chip693")
    services = {
        "cvkordrv": {"binaryPathName": f"{DRIVERS}\\cvkordrv.sys"},
        "cvdarlink": {"binaryPathName": f"{DRIVERS}\\cvdarlink.sys"},
    }
    machine_keys = {
        "SYSTEM\\CurrentControlSet\\Services\\cvkordrv\\Enum": {"0": instance},
        f"SYSTEM\\CurrentControlSet\\Enum\\{instance}\\Device Parameters\\KORM\\INFO": {
            "DarlinkEnabledDSPInfo": [8 if carries_rpc else 0]
        },
    }
    if name == "unknown":
        services, machine_keys = {}, {}
    return {"services": services, "registry": {"HKLM": machine_keys, "HKCU": {}}}


def main():
    root = pathlib.Path(__file__).resolve().parent / "machines"
    for name, identifiers in MACHINES.items():
        firmware = root / name / "firmware"
        firmware.mkdir(parents=True, exist_ok=True)
        oem_revision = OEM_REVISION if identifiers else OEM_REVISION_405
        (firmware / "FACP").write_bytes(fixed_description_table(oem_revision))
        if identifiers:
            (firmware / "PPTT").write_bytes(topology_table(*identifiers))
        (root / name / "platform.json").write_text(json.dumps(platform(name), indent=2) + "\n")


if __name__ == "__main__":
    main()
