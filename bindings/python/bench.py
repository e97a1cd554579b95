"""The same work by this package, Pillow, OpenCV and libvips, from an array to an array.

    PYTHONPATH=build/release/python/installed python3 bindings/python/bench.py [ROUNDS]

Prints a table: the least time of each in milliseconds, and its lines of code. All work on one
thread. Peers that are not installed are left out; libvips, for which Debian has no pyvips, is called
through ctypes, so its lines are not counted. A second table is the time of one thread and of two.
"""

import ctypes
import ctypes.util
import sys
import threading
import time

import numpy as np
import ombrilo

PHOTO = np.random.default_rng(1).integers(0, 256, (300, 400, 3), np.uint8)
# Smooth and noisy at once, 12 megapixels.
PHOTO = np.clip(PHOTO.repeat(10, 0).repeat(10, 1).astype(np.int16)
                + np.random.default_rng(2).integers(-9, 9, (3000, 4000, 1)), 0, 255).astype(np.uint8)
PAGE = np.ascontiguousarray(PHOTO[..., 1])

# What takes `a` and leaves `r`, for each peer.
OURS, PILLOW, OPENCV, VIPS = "ombrilo", "Pillow", "OpenCV", "libvips"
TASKS = {
    "as it is": (PHOTO, {
        OURS: "r = np.asarray(Image.from_array(a))",
        PILLOW: "r = np.asarray(PIL.Image.fromarray(a))",
        OPENCV: "r = cv2.cvtColor(a, cv2.COLOR_RGB2BGR)",
        VIPS: "r = vips(a, 'copy_memory', end=())",
    }),
    "negative": (PHOTO, {
        OURS: "r = np.asarray(Image.from_array(a).invert())",
        PILLOW: "r = np.asarray(ImageOps.invert(PIL.Image.fromarray(a)))",
        OPENCV: "r = cv2.bitwise_not(a)",
        VIPS: "r = vips(a, 'invert')",
    }),
    "gray": (PHOTO, {
        OURS: "r = np.asarray(Image.from_array(a).gray())",
        PILLOW: "r = np.asarray(PIL.Image.fromarray(a).convert('L'))",
        OPENCV: "r = cv2.cvtColor(a, cv2.COLOR_RGB2GRAY)",
        VIPS: "r = vips(a, 'colourspace', BW)",
    }),
    "gamma 1.8": (PHOTO, {
        OURS: "r = np.asarray(Image.from_array(a).gammacorrection(1.8))",
        PILLOW: "table = [round(255 * (v / 255) ** 1.8) for v in range(256)]\n"
                "r = np.asarray(PIL.Image.fromarray(a).point(table * 3))",
        OPENCV: "table = np.uint8([round(255 * (v / 255) ** 1.8) for v in range(256)])\n"
                "r = cv2.LUT(a, table)",
    }),
    "black and white, Otsu": (PAGE, {
        OURS: "r = np.asarray(Image.from_array(a).binary())",
        OPENCV: "r = cv2.threshold(a, 0, 255, cv2.THRESH_BINARY + cv2.THRESH_OTSU)[1]",
    }),
    "half the size, Lanczos": (PHOTO, {
        OURS: "r = np.asarray(Image.from_array(a).resize('50%'))",
        PILLOW: "r = np.asarray(PIL.Image.fromarray(a).resize((2000, 1500), PIL.Image.LANCZOS))",
        OPENCV: "r = cv2.resize(a, (2000, 1500), interpolation=cv2.INTER_LANCZOS4)",
        VIPS: "r = vips(a, 'resize', ctypes.c_double(0.5))",
    }),
    "turned by 7 degrees": (PHOTO, {
        OURS: "r = np.asarray(Image.from_array(a).rotate(7, 'bilinear'))",
        PILLOW: "turned = PIL.Image.fromarray(a).rotate(\n"
                "    -7, PIL.Image.BILINEAR, expand=True, fillcolor='white')\n"
                "r = np.asarray(turned)",
        OPENCV: "h, w = a.shape[:2]\n"
                "m = cv2.getRotationMatrix2D((w / 2, h / 2), -7, 1)\n"
                "size = np.abs(m[:, :2]) @ (w, h)\n"
                "m[:, 2] += (size - (w, h)) / 2\n"
                "r = cv2.warpAffine(a, m, tuple(size.astype(int)), borderValue=(255, 255, 255))",
        VIPS: "r = vips(a, 'rotate', ctypes.c_double(7))",
    }),
    "median 3x3": (PAGE, {
        OURS: "r = np.asarray(Image.from_array(a).enhancepage('median', '3x3'))",
        PILLOW: "r = np.asarray(PIL.Image.fromarray(a).filter(ImageFilter.MedianFilter(3)))",
        OPENCV: "r = cv2.medianBlur(a, 3)",
        VIPS: "r = vips(a, 'median', 3)",
    }),
    "sharpened 5x5": (PHOTO, {
        OURS: "r = np.asarray(Image.from_array(a).kernel('unsharp 5x5'))",
        PILLOW: "kernel = ImageFilter.Kernel((5, 5), 12 * [-1] + [49] + 12 * [-1])\n"
                "r = np.asarray(PIL.Image.fromarray(a).filter(kernel))",
        OPENCV: "kernel = np.full((5, 5), -1 / 25)\n"
                "kernel[2, 2] = 49 / 25\n"
                "r = cv2.filter2D(a, -1, kernel)",
    }),
    "opened 7x7": (PAGE, {
        OURS: "r = np.asarray(Image.from_array(a).morph('open', 'Square 7x7'))",
        PILLOW: "picture = PIL.Image.fromarray(a).filter(ImageFilter.MinFilter(7))\n"
                "r = np.asarray(picture.filter(ImageFilter.MaxFilter(7)))",
        OPENCV: "r = cv2.morphologyEx(a, cv2.MORPH_OPEN, np.ones((7, 7)))",
    }),
    "256 colors": (PHOTO[::2, ::2].copy(), {
        OURS: "r = np.asarray(Image.from_array(a).neuquant(8))",
        PILLOW: "r = np.asarray(PIL.Image.fromarray(a).quantize(256))",
    }),
}
THREADS = ["half the size, Lanczos", "median 3x3", "sharpened 5x5", "256 colors"]


def libvips():
    """A call of libvips: its result as bytes."""
    name = ctypes.util.find_library("vips")
    if name is None:
        return None
    c, pointer = ctypes.CDLL(name), ctypes.c_void_p
    c.vips_init(b"bench")
    c.vips_concurrency_set(1)
    c.vips_cache_set_max(0)
    c.vips_image_new_from_memory.restype = c.vips_image_write_to_memory.restype = pointer
    c.vips_image_copy_memory.restype = pointer

    def call(a, function, *arguments, end=(None,)):
        bands = 1 if a.ndim == 2 else 3
        image = pointer(c.vips_image_new_from_memory(
            pointer(a.ctypes.data), ctypes.c_size_t(a.nbytes), a.shape[1], a.shape[0], bands, 0))
        out, size = pointer(), ctypes.c_size_t()
        if function == "copy_memory":
            out = pointer(c.vips_image_copy_memory(image))
        elif getattr(c, "vips_" + function)(image, ctypes.byref(out), *arguments, *end) != 0:
            raise RuntimeError(function)
        memory = pointer(c.vips_image_write_to_memory(out, ctypes.byref(size)))
        c.g_object_unref(out)
        c.g_object_unref(image)
        c.g_free(memory)
        return size.value

    return call


def peers():
    """Name -> what its code sees."""
    found = {OURS: {"Image": ombrilo.Image}}
    try:
        import PIL.Image
        from PIL import ImageFilter, ImageOps
        found[PILLOW] = {"PIL": PIL, "ImageFilter": ImageFilter, "ImageOps": ImageOps}
    except ImportError:
        pass
    try:
        import cv2
        cv2.setNumThreads(1)
        found[OPENCV] = {"cv2": cv2}
    except ImportError:
        pass
    vips = libvips()
    if vips is not None:
        found[VIPS] = {"vips": vips, "BW": 1, "ctypes": ctypes}
    return found


def least_time(call, rounds):
    times = []
    for _ in range(rounds):
        start = time.perf_counter()
        call()
        times.append(time.perf_counter() - start)
    return 1000 * min(times)


def by_threads(call, count):
    """Milliseconds for two calls by one thread or by two."""
    threads = [threading.Thread(target=lambda: [call() for _ in range(2 // count)])
               for _ in range(count)]
    start = time.perf_counter()
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return 1000 * (time.perf_counter() - start)


def main():
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 7
    found = peers()

    def prepared(task, peer):
        a, codes = TASKS[task]
        code = compile(codes[peer], task, "exec")
        return lambda: exec(code, {"a": a, "np": np, **found[peer]})

    print("| 12 megapixels | " + " | ".join(f"{p}, ms | lines" for p in found) + " |")
    print("|---" * (1 + 2 * len(found)) + "|")
    for task, (_, codes) in TASKS.items():
        cells = []
        for peer in found:
            lines = "" if peer == VIPS else str(codes.get(peer, "").count("\n") + 1)
            cells += [f"{least_time(prepared(task, peer), rounds):.1f}", lines] \
                if peer in codes else ["", ""]
        print(f"| {task} | " + " | ".join(cells) + " |", flush=True)
    print("\n| two images | one thread, ms | two threads, ms | faster by |\n|---|---|---|---|")
    for task in THREADS:
        call = prepared(task, OURS)
        one, two = (min(by_threads(call, count) for _ in range(rounds)) for count in (1, 2))
        print(f"| {task} | {one:.1f} | {two:.1f} | {one / two:.2f} |")


if __name__ == "__main__":
    main()
