"""Recording-info files of all generations: made from a described content, converted, and dumped."""
import hashlib
import struct

from .layouts import (ARDEL_LONG_SIZE, ARDEL_SIZE, CONVERTED, OLDER, RECORD, RECORD_SIZE, SELK_SIZE, Field, element)
from .pattern import pattern, positions

GENERATIONS = {"Vexan": RECORD_SIZE, "Ardel": ARDEL_SIZE, "Selk": SELK_SIZE}
FORMATS = {"u8": "B", "u16": "H", "u32": "I", "i32": "i", "i64": "q"}
ENCODINGS = {"text": "utf-8", "utf-16be": "utf-16-be", "utf-16le": "utf-16-le"}
NAME_UNITS = 128   # as many units of a channel name are converted
TITLE_UNITS = 255  # a title of more is left out
TEXT_BYTES = 254   # what a converted text is cut to, in the middle of a character if need be


def generation_of(size):
    return {ARDEL_LONG_SIZE: "Ardel", ARDEL_SIZE: "Ardel", SELK_SIZE: "Selk"}.get(size, "Vexan")


def fields_of(generation):
    if generation == "Vexan":
        return RECORD
    return tuple(field for field in OLDER if generation == "Ardel" or not field.ardel_only)


def text_of(pieces):
    """A text, or a list of texts and of [text, how often]."""
    if isinstance(pieces, str):
        return pieces
    return "".join(piece if isinstance(piece, str) else piece[0] * piece[1] for piece in pieces)


def encoded_text(field, value):
    """A text and its terminator; without the terminator when the field has no room or the content says so."""
    encoding = ENCODINGS[field.type]
    zero = "\0".encode(encoding)
    if not isinstance(value, dict):
        data = text_of(value).encode(encoding) + zero
    elif "positions" in value:
        return positions(field.size, field.offset)
    elif "bytes" in value:
        data = bytes.fromhex(value["bytes"])
    elif "units" in value:
        order = "big" if field.type == "utf-16be" else "little"
        data = b"".join(unit.to_bytes(2, order) for unit in value["units"]) + zero
    else:
        run = "".join(chr(ord(value["from"]) + index) for index in range(value["count"]))
        data = run.encode(encoding) + (zero if value.get("terminated", True) else b"")
    return data[:field.size] if data[field.size:] in (b"", zero) else _too_long(field, data)


def _too_long(field, data):
    raise ValueError(f"{field.name}: {len(data)} bytes do not fit into {field.size}")


def encoded(field, value):
    if field.type in ENCODINGS:
        return encoded_text(field, value)
    if field.type == "bytes":
        data = bytes.fromhex(value["bytes"]) if isinstance(value, dict) else text_of(value).encode()
        return data if len(data) <= field.size else _too_long(field, data)
    count, number = element(field.type)
    return struct.pack(f"<{count}{FORMATS[number]}", *(value if isinstance(value, list) else [value]))


def make(content):
    """The bytes of an info file from what its content says: generation, background, fields, and what trails them."""
    generation = content["generation"]
    size = GENERATIONS[generation]
    image = bytearray(pattern(size) if content.get("background") == "pattern" else size)
    fields = {field.name: field for field in fields_of(generation)}
    for name, value in content.get("fields", {}).items():
        data = encoded(fields[name], value)
        image[fields[name].offset:fields[name].offset + len(data)] = data
    return bytes(image) + bytes.fromhex(content.get("trailing", ""))


def converted_text(field, data):
    """UTF-8 of an older text: empty when it is too long or cannot be converted, else at most 254 bytes."""
    units = [data[at:at + 2] for at in range(0, len(data), 2)]
    if field.name == "channel_name":
        units = units[:NAME_UNITS]
    length = units.index(b"\0\0") if b"\0\0" in units else len(units)
    if length > TITLE_UNITS:
        return b""
    try:
        text = b"".join(units[:length]).decode(ENCODINGS[field.type])
    except UnicodeDecodeError:
        return b""
    return text.encode()[:TEXT_BYTES]


def converted_field(field, target, data):
    if target.how == "utf-8":
        return converted_text(field, data).ljust(target.size, b"\0")
    if target.how == "milliseconds":
        seconds, = struct.unpack("<I", data)
        return struct.pack("<I", seconds * 1000 % 2**32)
    if target.how == "low":
        return data[:target.size]
    if target.how == "zero-extend":
        return data.ljust(target.size, b"\0")
    return data


def convert(image, generation):
    record = bytearray(RECORD_SIZE)
    for field in fields_of(generation):
        data = image[field.offset:field.offset + field.size]
        for target in field.targets:
            moved = converted_field(field, target, data)
            if len(moved) != target.size:
                raise ValueError(f"{field.name}: {len(moved)} bytes for the {target.size} at {target.offset}")
            record[target.offset:target.offset + target.size] = moved
    for field in RECORD:
        if field.name in CONVERTED:
            record[field.offset:field.offset + field.size] = encoded(field, CONVERTED[field.name])
    return bytes(record)


def record_of(image):
    """The record that a reader hands out for a file, its repair aside; None when the file is too short."""
    generation = generation_of(len(image))
    if generation != "Vexan":
        return convert(image, generation)
    return image[:RECORD_SIZE] if len(image) >= RECORD_SIZE else None


def hexadecimal(data):
    return [data[at:at + 48].hex() for at in range(0, len(data), 48)]


def dumped(field: Field, data):
    """One row of the dump. Texts and bytes end with the last that is not zero."""
    row = {"offset": field.offset, "size": field.size, "type": field.type, "name": field.name}
    count, number = element(field.type)
    if count:
        values = struct.unpack(f"<{count}{FORMATS[number]}", data)
        return row | {"value": values[0] if count == 1 else list(values)}
    shown = data.rstrip(b"\0")
    try:
        if field.type == "text" and b"\0" not in shown:
            return row | {"text": shown.decode()}
    except UnicodeDecodeError:
        pass
    return row | {"hex": hexadecimal(shown)}


def dump(name, image):
    record = record_of(image)
    whole = {"file": name, "size": len(image), "generation": generation_of(len(image)),
             "sha256": hashlib.sha256(record).hexdigest(),
             "record": [dumped(field, record[field.offset:field.offset + field.size]) for field in RECORD]}
    if whole["generation"] == "Vexan" and record[10627:10629] == b"\0\0":
        whole["when_nobody_records_it"] = {"record_complete": 1, "incomplete_reason": 5}
    return whole
