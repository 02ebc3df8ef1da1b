#!/usr/bin/env python3
"""Does one of the measured jobs with libvips, all pictures in one process.

The tools of the library do one operation a process, with a file between any two. Calling the library
spares it both: this is how a program would use it. Pixels flow through all operations at once.

usage: vips_job.py convert|chain|resize|png OUT-FOLDER PICTURE...
"""

import ctypes
import pathlib
import sys

import vips_library as library
from vips_library import apply, vips

KERNEL_LINEAR = 1  # VipsKernel


def main():
    job, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    library.start(sys.argv[0])
    mask = library.matrix(3, 3, [-2, -2, -2, -2, 74, -2, -2, -2, -2], 58)
    for path in sys.argv[3:]:
        image = library.opened(path)
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
        library.check(save(ctypes.c_void_p(image), str(target).encode(), *options, None))
        library.gobject.g_object_unref(image)


main()
