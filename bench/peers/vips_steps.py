#!/usr/bin/env python3
"""Does one operation several times in a row with libvips, on one picture.

Pixels flow through all steps at once where the operation lets them.

usage: vips_steps.py OPERATION COUNT PICTURE TARGET
"""

import ctypes
import sys

import vips_library as library
from vips_library import apply, vips

KERNEL_LINEAR = 1  # VipsKernel
FORMAT_UCHAR = 0  # VipsBandFormat


def double(value):
    return ctypes.c_double(value)


def brightness(image, _number):
    return apply(image, vips.vips_linear1, double(1), double(20), b"uchar", 1)


def look_up(image, number):
    # The same table for all steps.
    if number == 0:
        table = ctypes.c_void_p()
        library.check(vips.vips_identity(ctypes.byref(table), None))
        table = apply(table.value, vips.vips_linear1, double(-1), double(255), b"uchar", 1)
        look_up.table = ctypes.c_void_p(table)
    return apply(image, vips.vips_maplut, look_up.table)


def mask(image, _number):
    weights = library.matrix(3, 3, [-2, -2, -2, -2, 74, -2, -2, -2, -2], 58)
    return apply(image, vips.vips_convi, ctypes.c_void_p(weights))


def mean(image, _number):
    return apply(image, vips.vips_convi, ctypes.c_void_p(library.matrix(3, 3, [1] * 9, 9)))


def erode(image, _number):
    return apply(image, vips.vips_rank, 3, 3, 0)


def dilate(image, _number):
    return apply(image, vips.vips_rank, 3, 3, 8)


def equalize(image, _number):
    # Counts the levels first, for which the steps before have to be done: they are kept.
    kept = vips.vips_image_copy_memory(ctypes.c_void_p(image))
    library.gobject.g_object_unref(image)
    return apply(kept, vips.vips_hist_equal)


def resize(image, number):
    width = 3000 if number % 2 == 0 else 4000
    scale = width / vips.vips_image_get_width(ctypes.c_void_p(image))
    return apply(image, vips.vips_resize, double(scale), b"kernel", KERNEL_LINEAR)


def mosaic(image, _number):
    return apply(apply(image, vips.vips_shrink, double(8), double(8)), vips.vips_zoom, 8, 8)


def noise(image, _number):
    width = vips.vips_image_get_width(ctypes.c_void_p(image))
    height = vips.vips_image_get_height(ctypes.c_void_p(image))
    grain = ctypes.c_void_p()
    library.check(vips.vips_gaussnoise(ctypes.byref(grain), width, height, b"sigma", double(30),
                                       None))
    both = ctypes.c_void_p()
    library.check(vips.vips_add(ctypes.c_void_p(image), grain, ctypes.byref(both), None))
    return apply(both.value, vips.vips_cast, FORMAT_UCHAR)


OPERATIONS = {function.__name__: function
              for function in (brightness, look_up, mask, mean, erode, dilate, equalize, resize,
                               mosaic, noise)}


def main():
    operation, count, picture, target = sys.argv[1:]
    library.start(sys.argv[0])
    image = library.opened(picture)
    for number in range(int(count)):
        image = OPERATIONS[operation](image, number)
    library.check(vips.vips_ppmsave(ctypes.c_void_p(image), target.encode(), None))


main()
