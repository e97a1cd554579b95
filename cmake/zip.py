"""zip.py ARCHIVE FOLDER [PREFIX]: the files of a folder in a fixed order, all of one time, so that the
same files make the same archive."""
import pathlib
import sys
import zipfile

archive, folder = sys.argv[1], pathlib.Path(sys.argv[2])
prefix = sys.argv[3] if len(sys.argv) > 3 else ''
with zipfile.ZipFile(archive, 'w') as out:
    for name in sorted(p.relative_to(folder).as_posix() for p in folder.rglob('*') if p.is_file()):
        entry = zipfile.ZipInfo(prefix + name, (2020, 1, 1, 0, 0, 0))
        entry.compress_type = zipfile.ZIP_DEFLATED
        entry.external_attr = 0o644 << 16
        entry.create_system = 3  # which those attributes belong to, wherever this runs
        out.writestr(entry, (folder / name).read_bytes())
