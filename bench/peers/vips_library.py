"""libvips called as a library: what the programs beside this file share."""

import ctypes
import pathlib
import sys

SEQUENTIAL = 1  # VipsAccess

vips = ctypes.CDLL("libvips.so.42")
gobject = ctypes.CDLL("libgobject-2.0.so.0")
vips.vips_image_new_from_file.restype = ctypes.c_void_p
vips.vips_image_new_matrix_from_array.restype = ctypes.c_void_p
vips.vips_image_copy_memory.restype = ctypes.c_void_p
vips.vips_error_buffer.restype = ctypes.c_char_p
gobject.g_object_unref.argtypes = [ctypes.c_void_p]


def fail():
    sys.exit(f"{pathlib.Path(sys.argv[0]).stem}: {vips.vips_error_buffer().decode()}")


def check(code):
    if code:
        fail()


def start(program):
    check(vips.vips_init(program.encode()))


def opened(path):
    image = vips.vips_image_new_from_file(path.encode(), b"access", SEQUENTIAL, None)
    if not image:
        fail()
    return image


def apply(image, operation, *arguments):
    """The result of an operation, in place of the image."""
    result = ctypes.c_void_p()
    check(operation(ctypes.c_void_p(image), ctypes.byref(result), *arguments, None))
    gobject.g_object_unref(image)
    return result.value


def matrix(width, height, weights, scale):
    made = vips.vips_image_new_matrix_from_array(
        width, height, (ctypes.c_double * len(weights))(*weights), len(weights))
    vips.vips_image_set_double(ctypes.c_void_p(made), b"scale", ctypes.c_double(scale))
    return made
