# Small JPEG files of all photographs, 320 pixels wide.
import pathlib

import ombrilo

pathlib.Path("small").mkdir(exist_ok=True)
for path in pathlib.Path("photos").glob("*.jpg"):
    ombrilo.Image.open(path).resize("320x").save(pathlib.Path("small", path.name))
