#!/usr/bin/env python3
"""Does one of the measured jobs with libvips, all pictures in one process.

The tools of the library do one operation a process, with a file between any two. Calling the library
spares it both: this is how a program would use it. Pixels flow through all operations at once.

usage: vips_job.py convert|chain|resize|png OUT-FOLDER PICTURE...
"""

import ctypes
import pathlib
import sys

SEQUENTIAL = 1  # VipsAccess
KERNEL_LINEAR = 1  # VipsKernel

vips = ctypes.CDLL("libvips.so.42")
gobject = ctypes.CDLL("libgobject-2.0.so.0")
vips.vips_image_new_from_file.restype = ctypes.c_void_p
vips.vips_image_new_matrix_from_array.restype = ctypes.c_void_p
vips.vips_error_buffer.restype = ctypes.c_char_p
gobject.g_object_unref.argtypes = [ctypes.c_void_p]


def check(code):
    if code:
        sys.exit("vips_job: " + vips.vips_error_buffer().decode())


def apply(image, operation, *arguments):
    """The result of an operation, in place of the image."""
    result = ctypes.c_void_p()
    check(operation(ctypes.c_void_p(image), ctypes.byref(result), *arguments, None))
    gobject.g_object_unref(image)
    return result.value


def sharpening_mask():
    weights = (ctypes.c_double * 9)(*[-2, -2, -2, -2, 74, -2, -2, -2, -2])
    mask = vips.vips_image_new_matrix_from_array(3, 3, weights, 9)
    vips.vips_image_set_double(ctypes.c_void_p(mask), b"scale", ctypes.c_double(58))
    return mask


def main():
    job, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    check(vips.vips_init(sys.argv[0].encode()))
    mask = sharpening_mask()
    for path in sys.argv[3:]:
        image = vips.vips_image_new_from_file(path.encode(), b"access", SEQUENTIAL, None)
        if not image:
            sys.exit("vips_job: " + vips.vips_error_buffer().decode())
        if job in ("chain", "resize"):
            # Brightness 20; contrast 20 around the middle; sharpen 50.
            for factor, more in ((1, 20), (1.2, -25.6)):
                image = apply(image, vips.vips_linear1, ctypes.c_double(factor),
                              ctypes.c_double(more), b"uchar", 1)
            image = apply(image, vips.vips_convi, ctypes.c_void_p(mask))
        if job == "resize":
            scale = 1200 / vips.vips_image_get_width(ctypes.c_void_p(image))
            image = apply(image, vips.vips_resize, ctypes.c_double(scale), b"kernel",
                          KERNEL_LINEAR)
        suffix, save, options = (
            (".png", vips.vips_pngsave, ()) if job == "png" else
            (".jpg", vips.vips_jpegsave, (b"Q", 75)))
        target = folder / (pathlib.Path(path).stem + suffix)
        check(save(ctypes.c_void_p(image), str(target).encode(), *options, None))
        gobject.g_object_unref(image)


main()
