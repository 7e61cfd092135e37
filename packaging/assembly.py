"""Builds the .NET assembly with Mono's compiler, the same bytes every time."""

import hashlib
import struct
import subprocess

REFERENCES = "System.Runtime.Serialization.dll,System.Xml.Linq.dll,System.Xml.dll"


def build(sources, assembly):
    """Writes the assembly and, beside it, the XML file of its documentation."""
    subprocess.run(
        # A parameter that its name explains has no explanation (1573); every public member has one. Mono's own library knows
        # of null, too (436).
        ["mcs", "-target:library", "-unsafe", "-optimize", "-warnaserror", "-nowarn:436,1573", "-define:NULLABLE_BY_HAND",
         f"-reference:{REFERENCES}", f"-doc:{assembly.with_suffix('.xml')}", f"-out:{assembly}", *sorted(map(str, sources))],
        check=True,
    )
    assembly.write_bytes(without_chance(bytearray(assembly.read_bytes())))


def without_chance(image):
    """The compiler writes the time and an identifier by chance: instead no time, and an identifier made of the rest."""
    header = struct.unpack_from("<I", image, 0x3C)[0]
    struct.pack_into("<I", image, header + 8, 0)
    place = module_identifier(image)
    image[place : place + 16] = bytes(16)
    image[place : place + 16] = hashlib.sha256(image).digest()[:16]
    return bytes(image)


def module_identifier(image):
    """Where the metadata's heap of identifiers begins, which holds the module's alone."""
    metadata = image.index(b"BSJB")
    length = struct.unpack_from("<I", image, metadata + 12)[0]
    at = metadata + 16 + length
    streams = struct.unpack_from("<H", image, at + 2)[0]
    at += 4
    for _ in range(streams):
        offset, _size = struct.unpack_from("<II", image, at)
        end = image.index(0, at + 8)
        if image[at + 8 : end] == b"#GUID":
            return metadata + offset
        at += 8 + (end - at - 8) // 4 * 4 + 4
    raise ValueError("no heap of identifiers in the assembly")
