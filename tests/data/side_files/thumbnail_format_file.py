"""Thumbnail colour-format files: made from a described content, and dumped."""
from .info_file import dumped, encoded
from .layouts import THUMBNAIL_FORMAT, THUMBNAIL_FORMAT_SIZE
from .pattern import pattern


def make(content):
    size = content.get("size", THUMBNAIL_FORMAT_SIZE)
    image = bytearray(pattern(size) if content.get("background") == "pattern" else size)
    fields = {field.name: field for field in THUMBNAIL_FORMAT}
    for name, value in content.get("fields", {}).items():
        data = encoded(fields[name], value)
        image[fields[name].offset:fields[name].offset + len(data)] = data
    return bytes(image)


def dump(name, image):
    return {"file": name, "size": len(image),
            "record": [dumped(field, image[field.offset:field.offset + field.size]) for field in THUMBNAIL_FORMAT]}
