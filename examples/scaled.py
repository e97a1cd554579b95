"""The library from Python: scaled.py PATH, which is that of ombrilo.dll or libombrilo.so."""
import ctypes
import sys
from ctypes import POINTER, byref, c_int32, c_uint16, c_uint32, c_void_p

omb = ctypes.CDLL(sys.argv[1])


def function(name, result, *parameters):
    f = getattr(omb, name)
    f.restype, f.argtypes = result, parameters
    return f


newdib = function("omb_newdib", c_void_p, c_int32, c_int32, c_uint16)
freedib = function("omb_freedib", None, c_void_p)
invert = function("omb_invert", c_uint32, c_void_p)
scale = function("omb_scale", c_uint32, POINTER(c_void_p), c_uint32, c_uint32, c_uint32)
width = function("omb_DIBWidth", c_uint32, c_void_p)
height = function("omb_DIBHeight", c_uint32, c_void_p)
find_bits = function("omb_FindDIBBits", c_void_p, c_void_p)

image = c_void_p(newdib(3, 2, 24))
try:
    # scale() replaces the block: image holds the new address afterwards.
    if not (image and invert(image) and scale(byref(image), 6, 4, 2)):
        sys.exit("it did not work")
    print(width(image), "x", height(image), "pixels, the first one",
          *ctypes.string_at(find_bits(image), 3))
finally:
    freedib(image)
