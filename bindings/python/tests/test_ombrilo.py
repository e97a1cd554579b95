"""The package as its users have it: the installed wheel. OMB is the path of the program omb."""

import json
import os
import subprocess
import threading

import numpy as np
import ombrilo
import PIL.Image
import pytest
from ombrilo._arguments import OPERATIONS

OMB = os.environ.get("OMB", "omb")


def noise(height=37, width=53, channels=3):
    shape = (height, width, channels) if channels else (height, width)
    return np.random.default_rng(5).integers(0, 256, shape, np.uint8)


@pytest.mark.parametrize("channels", [0, 3, 4])
@pytest.mark.parametrize("how", ["plain", "upside down", "a piece", "columns apart"])
def test_arrays_come_in_and_go_out(channels, how):
    a = noise(channels=channels)
    a = {"plain": a, "upside down": a[::-1], "a piece": a[3:20, 5:21], "columns apart": a[:, ::2]}[
        how
    ]
    image = ombrilo.Image.from_array(a, background="#102030")
    expected = a
    if channels == 4:
        alpha, back = a[..., 3:].astype(int), np.array([0x10, 0x20, 0x30])
        expected = (a[..., :3] * alpha + back * (255 - alpha) + 127) // 255
    assert np.array_equal(np.asarray(image), expected)
    assert np.array_equal(image.to_array(), expected)


def test_bits_come_in_and_go_out():
    a = noise(channels=0) > 128
    image = ombrilo.Image.from_array(a)
    assert image.bits == 1 and image.size == (53, 37)
    assert np.array_equal(np.asarray(image), a)
    assert np.array_equal(np.asarray(image.invert()), ~a)
    four = ombrilo.Image.from_array(noise()).neuquant(4)
    assert np.array_equal(np.array(four.palette)[np.asarray(four)], four.to_array())


def test_arrays_show_the_image_itself_and_outlive_it():
    image = ombrilo.Image.from_array(noise())
    view = np.asarray(image)
    view[0, 0] = 1, 2, 3
    image.invert()
    assert tuple(image.to_array()[0, 0]) == (254, 253, 252) == tuple(view[0, 0])
    image.scale((9, 9))  # a new block
    assert view.shape == (37, 53, 3) and tuple(view[0, 0]) == (254, 253, 252)
    del image
    assert tuple(view[0, 0]) == (254, 253, 252)
    assert np.array(ombrilo.Image.from_array(view), copy=True).flags.owndata


def test_what_is_refused_says_why_and_changes_nothing():
    image = ombrilo.Image.from_array(noise())
    before = image.to_array()
    cases = [
        (ValueError, "'mode' must be point, bilinear, bicubic", lambda: image.scale("50%", "x")),
        (ValueError, "'size' must be a size", lambda: image.scale("half")),
        (ValueError, "'degrees' must be", lambda: image.rotate("30")),
        (ValueError, "'brightness' must be", lambda: image.brightnesscontrast(1.5, 0)),
        (ValueError, "there is no kernel", lambda: image.kernel("nothing")),
        (ValueError, "'points' must be levels", lambda: image.curve([(9, 0), (9, 255)])),
        (ValueError, "'points' must be levels", lambda: image.curve("0:0/300:255")),
        (ValueError, "higauss comes in", lambda: image.enhancepage("higauss", "3x3")),
        (ombrilo.Error, "leaves the image", lambda: image.crop(0, 0, 53, 5)),
        (ombrilo.Error, "takes 1, 4, 8 bits per pixel, not 24; try gray",
         lambda: image.pseudocolor("fire")),
        (TypeError, "unexpected keyword", lambda: image.invert(now=True)),
        (TypeError, "uint8 or bool", lambda: ombrilo.Image.from_array(before.astype(float))),
        (ValueError, "1, 3 or 4 channels", lambda: ombrilo.Image.from_array(before[..., :2])),
        (ValueError, "no image", lambda: ombrilo.Image(0, 5)),
        (ombrilo.Error, "does not have", lambda: setattr(image, "palette", [(1, 2, 3)])),
    ]
    for kind, reason, call in cases:
        with pytest.raises(kind, match=reason):
            call()
    assert np.array_equal(image.to_array(), before)
    # Nothing to do.
    image.gammacorrection(1).scale("100%").rotate(360).neuquant(24).truecolor().adjustghms(0)
    assert np.array_equal(image.to_array(), before)


def test_every_operation_gives_what_omb_gives(tmp_path):
    """All examples of all steps, called with what the command line takes."""
    steps = {s["name"] for s in json.loads(subprocess.check_output([OMB, "list", "--json"]))["steps"]}
    assert steps == set(OPERATIONS)
    first = ombrilo.Image.from_array(noise(480, 640))
    first.save(tmp_path / "in.bmp")
    commands = []
    for operation in OPERATIONS.values():
        for example in operation["examples"]:
            commands.append((operation, example))
    failed = []
    for number, (operation, example) in enumerate(commands):
        name, _, text = example.partition("=")
        before = [] if 24 in operation["depths"] else ["gray"]
        values, named = {}, {p["name"]: p for p in operation["parameters"]}
        for parameter, value in zip(operation["parameters"], text.split(",") if text else []):
            if value.partition("=")[0] in named:
                parameter, value = named[value.partition("=")[0]], value.partition("=")[2]
            if value:
                numeric = parameter["type"] in ("integer", "number") and value not in [
                    v["name"] for v in parameter.get("values", [])]
                values[parameter["name"]] = json.loads(value) if numeric else value
        image = first.copy()
        if before:
            image.gray()
        getattr(image, name)(**values)
        out = tmp_path / f"{number}.bmp"
        subprocess.run([OMB, "apply", tmp_path / "in.bmp", out, *before, example], check=True)
        with PIL.Image.open(out) as picture:
            same = np.array_equal(np.asarray(picture.convert("RGB")),
                                  np.asarray(image.to_pillow().convert("RGB")))
        if not same:
            failed.append(example)
    assert not failed


def test_files_keep_palette_and_resolution(tmp_path):
    image = ombrilo.Image.from_array(noise()).neuquant(8)
    image.dpi = (300, 200)
    image.save(tmp_path / "a.png")
    again = ombrilo.Image.open(tmp_path / "a.png")
    assert again.bits == 8 and again.palette[:200] == image.palette[:200]
    assert np.array_equal(again.to_array(), image.to_array())
    assert [round(d) for d in again.dpi] == [300, 200]
    for mode in ("1", "L", "P", "RGB", "RGBA", "LA", "CMYK", "I;16"):
        picture = PIL.Image.new(mode, (5, 4))
        assert ombrilo.Image.from_pillow(picture).size == (5, 4)
    gray = ombrilo.Image.from_array(noise(channels=0))
    assert gray.to_pillow().mode == "L" and gray.binary().to_pillow().mode == "1"


def test_kernels_of_ones_own():
    a = noise()
    right = ombrilo.Kernel([[0, 0, 1]])
    moved = ombrilo.Image.from_array(a).kernel(right)
    assert np.array_equal(moved.to_array()[:, 1:-1], a[:, 2:])
    upper = ombrilo.Kernel([[1], [None], [None]])
    moved = ombrilo.Image.from_array(a).kernel(upper)
    assert np.array_equal(moved.to_array()[1:-1], a[:-2])
    assert "unsharp 5x5" in ombrilo.kernels()


def test_curves_are_what_they_are_drawn_as():
    points = [(0, 10), (100, 180), (255, 230)]
    curve = np.frombuffer(ombrilo.bestfit(points), np.uint8)
    a = noise()
    assert np.array_equal(ombrilo.Image.from_array(a).curve(points).to_array(), curve[a])
    text = ombrilo.Image.from_array(a).curve("0:10/100:180/255:230", channel="red").to_array()
    assert np.array_equal(text[..., 0], curve[a[..., 0]])
    assert np.array_equal(text[..., 1:], a[..., 1:])


def test_notebooks_and_the_rest():
    image = ombrilo.Image.from_array(noise())
    import io

    with PIL.Image.open(io.BytesIO(image._repr_png_())) as picture:
        assert np.array_equal(np.asarray(picture), image.to_array())
    assert repr(image) == "<ombrilo.Image 53 x 37, 24 bits>"
    assert sum(image.histogram()) == sum(image.histogram("red")) == 53 * 37
    assert image.bits == 24
    assert image.copy().to_array().tobytes() == image.to_array().tobytes()
    assert ombrilo.Image(3, 2, 16).copy().transformat().bits == 24
    assert ombrilo.Image(3, 2, 32).truecolor().bits == 24
    assert image.iscolorful() and image.can_balance() and not image.can_pseudocolor()
    assert len(ombrilo.Image.scale.__doc__) > 300


def test_threads_run_beside_each_other():
    a = noise(1000, 1200)
    expected = ombrilo.Image.from_array(a).neuquant(8).to_array()
    results = []
    thread = threading.Thread(
        target=lambda: results.append(ombrilo.Image.from_array(a).neuquant(8).to_array()))
    turns = 0
    thread.start()
    while thread.is_alive():
        turns += 1
    # A call that kept the interpreter would leave this loop a handful of turns.
    assert turns > 1000
    assert np.array_equal(results[0], expected)
