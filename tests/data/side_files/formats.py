"""Which module makes and dumps a file, by its extension; and how a dump is written."""
import json

from . import fingerprint_file, info_file, thumbnail_format_file

BY_EXTENSION = {".inf": info_file, ".sas": fingerprint_file, ".cft": thumbnail_format_file}


def _row(row):
    """A row of a dump on one line, but for bytes, of which each 48 take one."""
    if len(row.get("hex", ())) < 2:
        return "    " + json.dumps(row, ensure_ascii=False)
    head = json.dumps({key: value for key, value in row.items() if key != "hex"}, ensure_ascii=False)
    lines = ",\n".join(f'      "{line}"' for line in row["hex"])
    return f'    {head[:-1]}, "hex": [\n{lines}]}}'


def dump_text(dump):
    """JSON, one field of the file on a line."""
    members = []
    for key, value in dump.items():
        if isinstance(value, list):
            rows = ",\n".join(_row(row) for row in value)
            members.append(f'  "{key}": [\n{rows}\n  ]')
        else:
            members.append(f'  "{key}": {json.dumps(value, ensure_ascii=False)}')
    return "{\n" + ",\n".join(members) + "\n}\n"
