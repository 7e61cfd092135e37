"""Takes out of a PDB what the linker leaves to chance: the time, folders, and names of the compiler's own temporary files.

A PDB is a file of streams in blocks; what is needed of their form is in LLVM's description of it. Stream 1 begins with a
version and the time; stream 3 lists the modules, each with two file names.
"""

import re
import struct

MAGIC = b"Microsoft C/C++ MSF 7.00\r\n\x1aDS\0\0\0"
BLOCK = 1024
NO_STREAM = 0xFFFFFFFF
INFO, DEBUG_INFORMATION = 1, 3
HEADER_BYTES, MODULE_BYTES, MODULES_SIZE_AT = 64, 64, 24
STREAM_AT, SYMBOLS_SIZE_AT, LINKER = 34, 36, b"* Linker *"


def streams_of(data):
    block, _, _, size, _, place = struct.unpack_from("<6I", data, len(MAGIC))
    if not data.startswith(MAGIC) or block != BLOCK:
        raise ValueError("not a PDB as the linker writes it")

    def gather(length, blocks):
        return b"".join(data[at * BLOCK : (at + 1) * BLOCK] for at in blocks)[:length]

    count = -(-size // BLOCK)
    directory = gather(size, struct.unpack_from(f"<{count}I", data, place * BLOCK))
    (streams,) = struct.unpack_from("<I", directory)
    sizes = struct.unpack_from(f"<{streams}I", directory, 4)
    at = 4 + 4 * streams
    for length in (0 if each == NO_STREAM else each for each in sizes):
        count = -(-length // BLOCK)
        yield gather(length, struct.unpack_from(f"<{count}I", directory, at))
        at += 4 * count


def file_of(streams):
    """The streams one after the other: block 0 tells of the file, 1 and 2 of free blocks, of which there are none."""
    blocks, places = [b"", b"", b""], []
    for stream in streams:
        parts = [stream[at : at + BLOCK] for at in range(0, len(stream), BLOCK)]
        places.append(range(len(blocks), len(blocks) + len(parts)))
        blocks += parts
    directory = struct.pack(f"<{1 + len(streams)}I", len(streams), *map(len, streams))
    directory += b"".join(struct.pack(f"<{len(each)}I", *each) for each in places)
    parts = [directory[at : at + BLOCK] for at in range(0, len(directory), BLOCK)]
    first = len(blocks)
    blocks += parts
    blocks.append(struct.pack(f"<{len(parts)}I", *range(first, first + len(parts))))
    if len(blocks) >= 8 * BLOCK:
        raise ValueError("a PDB of more blocks than are foreseen")
    blocks[0] = MAGIC + struct.pack("<6I", BLOCK, 1, len(blocks), len(directory), 0, len(blocks) - 1)
    blocks[1] = blocks[2] = bytes(BLOCK)
    return b"".join(block.ljust(BLOCK, b"\0") for block in blocks)


def plain(name):
    """`…/log/line.cpp.obj` as `line.cpp.obj`, `/tmp/ccAbCdEf.ltrans0.ltrans.o` as `ltrans0.ltrans.o`."""
    return re.sub(rb"^cc\w{6}\.", b"", name.rsplit(b"/", 1)[-1])


def without_places(information, streams):
    (size,) = struct.unpack_from("<I", information, MODULES_SIZE_AT)
    modules, at, end = b"", HEADER_BYTES, HEADER_BYTES + size
    while at < end:
        fixed = information[at : at + MODULE_BYTES]
        name, archive = information[at + MODULE_BYTES : end].split(b"\0", 2)[:2]
        at += (MODULE_BYTES + len(name) + len(archive) + 2 + 3) // 4 * 4
        if name == LINKER:
            # The module of the linker itself tells in which folder it was called, and how: nothing but its mark stays.
            (own,) = struct.unpack_from("<H", fixed, STREAM_AT)
            streams[own] = streams[own][:4]
            fixed = fixed[:SYMBOLS_SIZE_AT] + struct.pack("<I", 4) + fixed[SYMBOLS_SIZE_AT + 4 :]
        module = fixed + plain(name) + b"\0" + plain(archive) + b"\0"
        modules += module.ljust((len(module) + 3) // 4 * 4, b"\0")
    header = bytearray(information[:HEADER_BYTES])
    struct.pack_into("<I", header, MODULES_SIZE_AT, len(modules))
    return bytes(header) + modules + information[end:]


def without_chance(data):
    streams = list(streams_of(data))
    streams[INFO] = streams[INFO][:4] + bytes(4) + streams[INFO][8:]
    streams[DEBUG_INFORMATION] = without_places(streams[DEBUG_INFORMATION], streams)
    return file_of(streams)
