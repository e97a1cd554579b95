"""Ombrilo: image processing for scans and photographs.

    import ombrilo

    image = ombrilo.Image.open("scan.png")           # through Pillow
    image.gray().enhancepage("median", "3x3").binary()
    image.save("clean.png")

    image = ombrilo.Image.from_array(array)          # rows of RGB, RGBA, gray or bool
    view = np.asarray(image.scale("50%"))            # without a copy where the layout allows

Operations change the image and return it; `copy()` keeps the one before. They have the names and
arguments of the steps of `omb`. What is refused raises `Error` (or `ValueError`, `TypeError` for an
argument) with the reason, and leaves the image as it was. The interpreter runs on while the library
works, so that threads share the work on several images.
"""

from ._image import Error, Image, Kernel, bestfit, kernels
from ._version import version as __version__

__all__ = ["Error", "Image", "Kernel", "bestfit", "kernels", "__version__"]
