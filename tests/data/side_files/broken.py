"""Side files with something wrong or unusual, for tests to make where they need them.

A row of the tables: the file's name, what is wrong with it, its bytes, and how reading it ends.
"""
import typing

from . import fingerprint_file, info_file
from .formats import dump_text
from .layouts import (ARDEL_LONG_SIZE, ARDEL_SIZE, FINGERPRINT_HEADER_SIZE, FINGERPRINT_LIMIT, RECORD_SIZE, SELK_SIZE,
                      THUMBNAIL_FORMAT_SIZE)
from .pattern import pattern

HIGH, LOW, EMOJI = 0xD83D, 0xDE00, [0xD83D, 0xDE00]


class Broken(typing.NamedTuple):
    name: str
    wrong: str
    image: bytes
    expected: dict


def _vexan(name, wrong, **fields):
    fields = {"version": 20, "channel_name": "First", "programe_title": "News", "channel_num": "1-1",
              "record_complete": 1} | fields
    image = info_file.make({"generation": "Vexan", "fields": fields})
    return Broken(f"vexan-{name}.inf", wrong, image, {"result": 0})


def _selk(name, wrong, **fields):
    fields = {"channel_name": "Channel", "programe_title": "Title", "channel_num": "1", "duration": 60} | fields
    return Broken(f"selk-{name}.inf", wrong, info_file.make({"generation": "Selk", "fields": fields}), {"result": 0})


def _sized(name, wrong, size):
    return Broken(f"{name}.inf", wrong, pattern(size), {"result": 0 if size >= RECORD_SIZE else -2})


# The result is that of svc_pvr_get_pvr_file_info; audio_only that of svc_pvr_is_audio_only, where it differs.
INFO_FILES = (
    _sized("empty", "0 bytes; a backup beside it does not help", 0),
    _sized("one-byte", "1 byte", 1),
    _sized("vexan-8000-bytes", "8000 bytes, less than a record", 8000),
    _sized("vexan-short-by-one", "1 byte less than a record", RECORD_SIZE - 1),
    _sized("vexan-long-by-one", "1 byte more than a record; it is not read", RECORD_SIZE + 1),
    _sized("vexan-20000-bytes", "20000 bytes, of which only the first are the record", 20000),
    _sized("selk-short-by-one", "1 byte less than the older generation, so read as the current one", SELK_SIZE - 1),
    _sized("selk-long-by-one", "1 byte more than the older generation, so read as the current one", SELK_SIZE + 1),
    _sized("ardel-short-by-one", "1 byte less than the older generation, so read as the current one", ARDEL_SIZE - 1),
    _sized("ardel-long-by-one", "1 byte more than the older generation, so read as the current one", ARDEL_SIZE + 1),
    _sized("ardel-12051-bytes", "1 byte less than the longer form, so read as the current one", ARDEL_LONG_SIZE - 1),
    _sized("ardel-12053-bytes", "1 byte more than the longer form, so read as the current one", ARDEL_LONG_SIZE + 1),
    _vexan("version-0", "the layout version is 0; it is not looked at", version=0),
    _vexan("record-complete-2", "record_complete is neither 0 nor 1; only 0 is repaired", record_complete=2),
    _vexan("texts-without-terminator", "the three texts fill their fields", channel_name={"positions": True},
           programe_title={"positions": True}, channel_num={"positions": True}),
    _vexan("texts-not-utf-8", "the texts are no UTF-8: a byte that never occurs, half a character, a surrogate",
           channel_name={"bytes": "4dff6e"}, programe_title={"bytes": "4d6fe698"}, channel_num={"bytes": "31eda080"}),
    _vexan("thumbnail-type-2", "the thumbnail type is neither 0 nor 1", nThumbnailType=2)._replace(
        expected={"result": 0, "audio_only": -2}),
    _vexan("largest-numbers", "times and identifiers of 2^32 - 1", start_time=2**32 - 1, duration=2**32 - 1,
           resume_play_pos=2**32 - 1, video_pid=2**32 - 1, PCR_pid=2**32 - 1, audio_pid=2**32 - 1),
    _selk("name-unpaired-high", "the channel name has a high surrogate before a letter: it comes back empty",
          channel_name={"units": [0x41, HIGH, 0x42]}),
    _selk("name-unpaired-low", "the channel name has a low surrogate alone: it comes back empty",
          channel_name={"units": [0x41, LOW, 0x42]}),
    _selk("name-ends-high", "the channel name ends with a high surrogate: it comes back empty",
          channel_name={"units": [0x41, 0x42, HIGH]}),
    _selk("name-pair-swapped", "the channel name has a pair the wrong way round: it comes back empty",
          channel_name={"units": [LOW, HIGH]}),
    _selk("name-pair-across-the-cut", "the 128th unit of the channel name is half a pair: it comes back empty",
          channel_name={"units": [0x61] * 127 + EMOJI + [0x62]}),
    _selk("name-pair-before-the-cut", "units 127 and 128 of the channel name are a pair: they are its end",
          channel_name={"units": [0x61] * 126 + EMOJI + [0x62]}),
    _selk("name-without-terminator", "the channel name fills its 256 units: the first 128 come back",
          channel_name={"units": [0x63] * 256}),
    _selk("name-unpaired-behind-the-cut", "the channel name has half a pair behind its 128 units: it does not matter",
          channel_name={"units": [0x63] * 130 + [HIGH]}),
    _selk("title-unpaired-high", "the title has a high surrogate before a letter: it comes back empty",
          programe_title={"units": [0x41, HIGH, 0x42]}),
    _selk("title-unpaired-low", "the title has a low surrogate alone: it comes back empty",
          programe_title={"units": [0x41, LOW, 0x42]}),
    _selk("title-ends-high", "the title ends with a high surrogate: it comes back empty",
          programe_title={"units": [0x41, 0x42, HIGH]}),
    _selk("title-pair-swapped", "the title has a pair the wrong way round: it comes back empty",
          programe_title={"units": [LOW, HIGH]}),
    _selk("title-255-units", "the title has the most units that are taken",
          programe_title={"units": [0x74] * 255}),
    _selk("title-without-terminator", "the title fills its 256 units: it comes back empty",
          programe_title={"units": [0x74] * 256}),
    _selk("title-too-long-in-utf-8", "the title is 765 bytes of UTF-8: 254 come back, which end within a character",
          programe_title={"units": [0x984C] * 255}),
    _selk("texts-of-the-other-byte-order", "both names have the other's byte order, which makes other characters",
          channel_name={"units": [0x4100, 0x4200]}, programe_title={"units": [0x4100, 0x4200]}),
    _selk("texts-behind-a-byte-order-mark", "both names begin with a byte order mark, which is a character like others",
          channel_name={"units": [0xFEFF, 0x41]}, programe_title={"units": [0xFEFF, 0x41]}),
)


def _sas(name, wrong, entries, data=b"", count=None, reads=(), write=0):
    """Reads are (time, result, size), the size None where the caller's is left alone."""
    image = fingerprint_file.header(entries, count=count) + data
    return Broken(f"{name}.sas", wrong, image, _sas_expected(reads, write))


def _sas_expected(reads, write):
    return {"reads": [{"time": time, "result": result, "size": size} for time, result, size in reads], "write": write}


def _sas_cut(name, wrong, size):
    whole = fingerprint_file.header([(7, 5, FINGERPRINT_HEADER_SIZE)]) + b"block"
    return Broken(f"{name}.sas", wrong, whole[:size], _sas_expected([(7, -1, None)], -1))


def _sas_count(name, count):
    return _sas(name, f"the count is {count}", [(7, 5, FINGERPRINT_HEADER_SIZE)], b"block", count, [(7, -1, None)], -1)


BEHIND = FINGERPRINT_HEADER_SIZE

# What reading each time with svc_pvr_read_sas_file gives, and what svc_pvr_write_sas_file of another block.
FINGERPRINT_FILES = (
    _sas_cut("empty", "0 bytes", 0),
    _sas_cut("header-of-one-byte", "1 byte", 1),
    _sas_cut("header-short-by-one", "1 byte less than a header", FINGERPRINT_HEADER_SIZE - 1),
    _sas_count("count-0", 0),
    _sas_count("count-minus-1", -1),
    _sas_count("count-301", FINGERPRINT_LIMIT + 1),
    _sas_count("count-largest", 2**31 - 1),
    _sas_count("count-smallest", -2**31),
    _sas("count-300-of-nothing", "a full header of empty entries: all have the time 0", [], count=FINGERPRINT_LIMIT,
         reads=[(0, 0, 0), (1, -1, None)], write=-1),
    _sas("block-missing", "the header alone: its block was never written", [(7, 5, BEHIND)], reads=[(7, -1, 5)]),
    _sas("block-short-by-one", "the block lacks its last byte", [(7, 5, BEHIND)], b"bloc", reads=[(7, -1, 5)]),
    _sas("second-block-missing", "the second of two blocks was never written", [(7, 5, BEHIND), (8, 9, BEHIND + 5)],
         b"block", reads=[(7, 0, 5), (8, -1, 9)]),
    _sas("offset-at-the-end", "the block begins where the file ends", [(7, 1, BEHIND + 5)], b"block",
         reads=[(7, -1, 1)]),
    _sas("offset-beyond-the-end", "the block begins far behind the end of the file", [(7, 5, 1_000_000)], b"block",
         reads=[(7, -1, 5)]),
    _sas("offset-largest", "the block begins at 2^32 - 1; what follows it would begin beyond 32 bits",
         [(7, 5, 2**32 - 1)], b"block", reads=[(7, -1, 5)], write=-1),
    _sas("offset-in-the-header", "the block lies within the header, which is inside the file: it can be read",
         [(7, 8, 0)], b"block", reads=[(7, 0, 8)]),
    _sas("offset-and-size-overflow", "offset and size add up to 16 in 32 bits", [(7, 0x20, 0xFFFFFFF0)], b"block",
         reads=[(7, -1, 0x20)], write=-1),
    _sas("size-beyond-the-end", "the block is larger than the file", [(7, 1_000_000, BEHIND)], b"block",
         reads=[(7, -1, 1_000_000)]),
    _sas("size-negative", "the size is 2^31, below 0 as the caller sees it", [(7, 2**31, BEHIND)], b"block",
         reads=[(7, -1, -2**31)]),
    _sas("size-largest", "the size is 2^32 - 1, or -1 as the caller sees it", [(7, 2**32 - 1, BEHIND)], b"block",
         reads=[(7, -1, -1)], write=-1),
    _sas("empty-block-beyond-the-end", "a block of size 0 behind the end of the file: nothing of it is read",
         [(7, 0, 1_000_000)], b"block", reads=[(7, 0, 0)]),
)


def _cft(name, wrong, data):
    return Broken(f"{name}.cft", wrong, data, {"result": 0 if len(data) >= THUMBNAIL_FORMAT_SIZE else -2})


# The result is that of svc_pvr_get_yuv_info.
THUMBNAIL_FORMAT_FILES = (
    _cft("empty", "0 bytes", b""),
    _cft("one-byte", "1 byte", pattern(1)),
    _cft("short-by-one", "1 byte less than the record", pattern(THUMBNAIL_FORMAT_SIZE - 1)),
    _cft("long-by-one", "1 byte more than the record; it is not read", pattern(THUMBNAIL_FORMAT_SIZE + 1)),
    _cft("all-ones", "all numbers are -1; they are handed out as they are", b"\xff" * THUMBNAIL_FORMAT_SIZE),
)

ALL = INFO_FILES + FINGERPRINT_FILES + THUMBNAIL_FORMAT_FILES


def write(folder):
    """Makes all of them in a folder, the dumps of the info files that can be read, and broken.json."""
    folder.mkdir(parents=True, exist_ok=True)
    rows = []
    for broken in ALL:
        (folder / broken.name).write_bytes(broken.image)
        rows.append({"file": broken.name, "wrong": broken.wrong, "size": len(broken.image)} | broken.expected)
        if broken in INFO_FILES and broken.expected["result"] == 0:
            dump = dump_text(info_file.dump(broken.name, broken.image))
            (folder / f"{broken.name}.json").write_text(dump, encoding="utf-8")
    (folder / "broken.json").write_text(dump_text({"files": rows}), encoding="utf-8")
    print(f"made {len(rows)} files in {folder}")
