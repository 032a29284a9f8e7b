"""Fingerprint files: made from a described content, and listed."""
import hashlib
import struct

from .layouts import FINGERPRINT_HEADER_SIZE, FINGERPRINT_LIMIT, FINGERPRINT_VERSION
from .pattern import pattern


def header(entries, version=FINGERPRINT_VERSION, count=None):
    """The header for entries of (time, size, offset); what lies behind them is zero."""
    count = len(entries) if count is None else count
    columns = list(zip(*entries)) or [(), (), ()]
    numbers = [list(column) + [0] * (FINGERPRINT_LIMIT - len(column)) for column in columns]
    data = struct.pack("<Ii", version, count)
    for format_code, column in zip("qII", numbers):
        data += struct.pack(f"<{FINGERPRINT_LIMIT}{format_code}", *column)
    return data


def block_of(described, index):
    """A block: bytes in hexadecimal, a text, or so many bytes of the pattern, which begins elsewhere in each."""
    if "bytes" in described:
        return bytes.fromhex(described["bytes"])
    if "text" in described:
        return described["text"].encode()
    return pattern(described["size"], 37 * index)


def described_blocks(content):
    if "blocks" in content:
        return content["blocks"]
    many = content["many_blocks"]
    return [{"time": many["first_time"] + index * many["time_step"], "size": 1 + index % many["sizes"]}
            for index in range(many["count"])]


def make(content):
    """Header and blocks, which lie one behind the other unless the content gives their order in the file."""
    described = described_blocks(content)
    blocks = [block_of(block, index) for index, block in enumerate(described)]
    order = content.get("order", list(range(len(blocks))))
    offsets, data = {}, b""
    for index in order:
        offsets[index] = FINGERPRINT_HEADER_SIZE + len(data)
        data += blocks[index] + bytes.fromhex(content.get("between", ""))
    entries = [(described[index]["time"], len(block), offsets[index]) for index, block in enumerate(blocks)]
    return header(entries, content.get("version", FINGERPRINT_VERSION)) + data


def dump(name, image):
    """What a reader finds: a time that comes twice is found where it comes first."""
    version, count = struct.unpack_from("<Ii", image)
    entries = []
    for index in range(count):
        time, = struct.unpack_from("<q", image, 8 + 8 * index)
        size, = struct.unpack_from("<I", image, 2408 + 4 * index)
        offset, = struct.unpack_from("<I", image, 3608 + 4 * index)
        entries.append({"time": time, "size": size, "offset": offset,
                        "sha256": hashlib.sha256(image[offset:offset + size]).hexdigest()})
    return {"file": name, "size": len(image), "version": version, "count": count, "blocks": entries}
