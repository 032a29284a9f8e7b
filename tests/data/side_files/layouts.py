"""Where every byte of the side files lies. Typed by hand and independent of the library: these tables are a
second opinion on its readers and writers, and the pages under docs/ are compared with them.
"""
import typing

RECORD_SIZE = 10905
ARDEL_SIZE = 12048
ARDEL_LONG_SIZE = 12052  # its last 4 bytes are never read
SELK_SIZE = 12044
CURRENT_VERSION = 20

FINGERPRINT_VERSION = 20150825
FINGERPRINT_LIMIT = 300
FINGERPRINT_HEADER_SIZE = 4808
THUMBNAIL_FORMAT_SIZE = 52


class Field(typing.NamedTuple):
    """A region of a file. Its type is u8, u16, u32, i32, i64, "COUNT × TYPE" of these, text or bytes."""
    offset: int
    size: int
    type: str
    name: str


def element(type_name):
    """How many numbers of which type lie in a field; 0 for text and bytes."""
    count, _, single = type_name.rpartition(" × ")
    return (int(count) if count else 1, single) if single[1:].isdigit() else (0, single)


# The record that the library hands out, which is the current generation of the info file.
RECORD = tuple(Field(*row) for row in (
    (0, 2, "u16", "version"),
    (2, 256, "text", "channel_name"),
    (258, 256, "text", "programe_title"),
    (514, 256, "text", "channel_num"),
    (770, 4, "i32", "reserved_770"),
    (774, 4, "i32", "reserved_774"),
    (778, 4, "u32", "start_time"),
    (782, 4, "u32", "duration"),
    (786, 4, "u32", "resume_play_pos"),
    (790, 4, "u32", "opaque_790"),
    (794, 4, "u32", "nThumbnailType"),
    (798, 4, "u32", "video_pid"),
    (802, 4, "u32", "PCR_pid"),
    (806, 4, "u32", "audio_pid"),
    (810, 4, "u32", "opaque_810"),
    (814, 2, "u16", "program_num"),
    (816, 2, "u16", "opaque_816"),
    (818, 2, "u16", "major"),
    (820, 2, "u16", "minor"),
    (822, 2, "u16", "opaque_822"),
    (824, 2, "u16", "channel_type"),
    (826, 256, "bytes", "opaque_826"),
    (1082, 16, "4 × u32", "opaque_1082"),
    (1098, 150, "bytes", "opaque_1098"),
    (1248, 4096, "bytes", "opaque_1248"),
    (5344, 256, "bytes", "opaque_5344"),
    (5600, 16, "4 × u32", "opaque_5600"),
    (5616, 4, "u32", "flag_HD"),
    (5620, 4, "u32", "flag_TTX"),
    (5624, 4, "u32", "opaque_5624"),
    (5628, 510, "bytes", "opaque_5628"),
    (6138, 4, "u32", "opaque_6138"),
    (6142, 2, "u16", "rating"),
    (6144, 14, "bytes", "opaque_6144"),
    (6158, 2, "u16", "repeat_type"),
    (6160, 2, "u16", "opaque_6160"),
    (6162, 4, "u32", "video_type"),
    (6166, 4, "u32", "audio_type"),
    (6170, 8, "2 × u32", "opaque_6170"),
    (6178, 80, "bytes", "opaque_6178"),
    (6258, 2, "u16", "opaque_6258"),
    (6260, 1, "u8", "content_version"),
    (6261, 256, "bytes", "opaque_6261"),
    (6517, 12, "3 × u32", "opaque_6517"),
    (6529, 2, "u16", "opaque_6529"),
    (6531, 4096, "bytes", "opaque_6531"),
    (10627, 2, "u16", "record_complete"),
    (10629, 16, "bytes", "opaque_10629"),
    (10645, 2, "u16", "incomplete_reason"),
    (10647, 258, "bytes", "opaque_10647"),
))


class Target(typing.NamedTuple):
    """Where a field of an older generation goes in the record, and how.

    copy: the bytes as they are; low: its lower bytes, as many as fit; zero-extend: its bytes, and zeros above;
    milliseconds: times 1000, modulo 2^32; utf-8: the text, converted.
    """
    offset: int
    size: int
    how: str


class OlderField(typing.NamedTuple):
    """A region of an older generation. The types utf-16be and utf-16le are texts; only Ardel has what is its own."""
    offset: int
    size: int
    type: str
    name: str
    targets: tuple
    ardel_only: bool = False


def _older(offset, size, type_name, name, *targets, ardel_only=False):
    return OlderField(offset, size, type_name, name, tuple(Target(*target) for target in targets), ardel_only)


# What is read of the two older generations. What lies between these fields is not read.
OLDER = (
    _older(0, 512, "utf-16be", "channel_name", (2, 256, "utf-8")),
    _older(512, 256, "text", "channel_num", (514, 256, "copy")),
    _older(772, 4, "u32", "start_time", (778, 4, "copy")),
    _older(776, 4, "u32", "duration", (782, 4, "milliseconds")),
    _older(780, 4, "u32", "opaque_780", (790, 4, "copy")),
    _older(784, 4, "u32", "nThumbnailType", (794, 4, "copy")),
    # Deliberately also into two stream identifiers and a number, in seconds: kept as it is.
    _older(788, 4, "u32", "resume_play_pos", (786, 4, "milliseconds"), (802, 4, "copy"), (806, 4, "copy"),
           (810, 4, "copy")),
    _older(792, 512, "utf-16le", "programe_title", (258, 256, "utf-8")),
    _older(1304, 4, "u32", "video_pid", (798, 4, "copy")),
    _older(1316, 2, "u16", "program_num", (814, 2, "copy")),
    _older(1318, 2, "u16", "opaque_1318", (816, 2, "copy")),
    _older(1320, 2, "u16", "major", (818, 2, "copy")),
    _older(1322, 2, "u16", "minor", (820, 2, "copy")),
    _older(1324, 2, "u16", "opaque_1324", (822, 2, "copy")),
    _older(1376, 2, "u16", "channel_type", (824, 2, "copy")),
    _older(1378, 256, "bytes", "opaque_1378", (826, 256, "copy")),
    _older(1636, 16, "4 × u32", "opaque_1636", (1082, 16, "copy")),
    _older(1652, 150, "bytes", "opaque_1652", (1098, 150, "copy")),
    _older(1802, 4096, "bytes", "opaque_1802", (1248, 4096, "copy")),
    _older(5898, 256, "bytes", "opaque_5898", (5344, 256, "copy")),
    _older(6412, 16, "4 × u32", "opaque_6412", (5600, 16, "copy")),
    _older(6428, 4, "u32", "flag_HD", (5616, 4, "copy")),
    _older(6432, 4, "u32", "flag_TTX", (5620, 4, "copy")),
    _older(6436, 4, "u32", "opaque_6436", (5624, 4, "copy")),
    # Into the upper half of the record's 510 bytes at 5628; their lower half stays zero.
    _older(6950, 255, "bytes", "opaque_6950", (5883, 255, "copy")),
    _older(7468, 4, "u32", "opaque_7468", (6138, 4, "copy")),
    _older(7472, 4, "u32", "rating", (6142, 2, "low")),
    _older(7476, 14, "bytes", "opaque_7476", (6144, 14, "copy")),
    _older(7490, 2, "u16", "repeat_type", (6158, 2, "copy")),
    _older(7492, 4, "u32", "opaque_7492", (6160, 2, "low")),
    _older(7496, 4, "u32", "video_type", (6162, 4, "copy")),
    _older(7500, 4, "u32", "audio_type", (6166, 4, "copy")),
    _older(7504, 8, "2 × u32", "opaque_7504", (6170, 8, "copy")),
    _older(7512, 2, "u16", "opaque_7512", (6258, 2, "copy")),
    _older(7514, 80, "bytes", "opaque_7514", (6178, 80, "copy")),
    _older(7674, 1, "u8", "content_version", (6260, 1, "copy")),
    _older(7675, 256, "bytes", "opaque_7675", (6261, 256, "copy")),
    _older(7932, 12, "3 × u32", "opaque_7932", (6517, 12, "copy")),
    _older(7944, 2, "u16", "opaque_7944", (6529, 2, "copy")),
    _older(7946, 4096, "bytes", "opaque_7946", (6531, 4096, "copy")),
    _older(12043, 1, "u8", "opaque_12043", (10633, 4, "zero-extend"), ardel_only=True),
    _older(12044, 4, "u32", "opaque_12044", (10637, 4, "copy"), ardel_only=True),
)

# What every converted record says, whatever the older file says.
CONVERTED = {"version": CURRENT_VERSION, "record_complete": 1}

FINGERPRINT_HEADER = tuple(Field(*row) for row in (
    (0, 4, "u32", "version"),
    (4, 4, "i32", "count"),
    (8, 2400, "300 × i64", "recTime"),
    (2408, 1200, "300 × u32", "bufSize"),
    (3608, 1200, "300 × u32", "offset"),
))

THUMBNAIL_FORMAT = tuple(Field(*row) for row in (
    (0, 4, "i32", "color_format"),
    (4, 4, "i32", "width"),
    (8, 4, "i32", "height"),
    (12, 40, "bytes", "reserved"),
))
