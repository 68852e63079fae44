"""Images of every format that Qt reads: valid, truncated, and larger than the limit."""

import base64
import struct
import zlib

from samplekit.png import chunk

# The size limit of the driver in the fuzzer.
LIMIT = 512

# Two by two pixels of grey.
JPEG = base64.b64decode(
    "/9j/4AAQSkZJRgABAQEAZABkAAD/2wBDAFA3PEY8MlBGQUZaVVBfeMiCeG5uePWvuZHI////////////////////////////////////////////"
    "////////wAALCAACAAIBAREA/8QAHwAAAQUBAQEBAQEAAAAAAAAAAAECAwQFBgcICQoL/8QAtRAAAgEDAwIEAwUFBAQAAAF9AQIDAAQRBRIhMUEG"
    "E1FhByJxFDKBkaEII0KxwRVS0fAkM2JyggkKFhcYGRolJicoKSo0NTY3ODk6Q0RFRkdISUpTVFVWV1hZWmNkZWZnaGlqc3R1dnd4eXqDhIWGh4iJ"
    "ipKTlJWWl5iZmqKjpKWmp6ipqrKztLW2t7i5usLDxMXGx8jJytLT1NXW19jZ2uHi4+Tl5ufo6erx8vP09fb3+Pn6/9oACAEBAAA/AH1//9k="
)
SVG = b'<svg xmlns="http://www.w3.org/2000/svg" width="4" height="2"><g id="a"><rect width="2" height="2"/></g></svg>'
XPM = b'/* XPM */\nstatic char *a[] = {\n"2 2 2 1",\n"a c #ff0000",\n"b c None",\n"ab",\n"ba"};\n'
PORTABLE = [
    b"P1\n2 2\n0 1 1 0\n",
    b"P2\n2 2\n255\n0 9 99 255\n",
    b"P3\n1 1\n255\n1 2 3\n",
    b"P4\n8 1\n\x55",
    b"P5\n2 2\n255\n\0\1\2\3",
    b"P6\n1 1\n255\nabc",
    b"P6 # note\n1 1 65535\nabcdef",
]


def png(width, height, depth, colour_type, rows, before=b"", interlaced=0):
    """A PNG. `rows` are the rows before compression, with their filter bytes; `before` are further chunks."""
    header = struct.pack(">IIBBBBB", width, height, depth, colour_type, 0, 0, interlaced)
    chunks = chunk(b"IHDR", header) + before + chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b"")
    return b"\x89PNG\r\n\x1a\n" + chunks


def bmp(width, height, bits, pixels):
    palette = bytes(4 * (1 << bits)) if bits <= 8 else b""
    header = struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, 0, len(pixels), 2835, 2835, 0, 0)
    offset = 14 + len(header) + len(palette)
    return b"BM" + struct.pack("<IHHI", offset + len(pixels), 0, 0, offset) + header + palette + pixels


def gif(width, height):
    """A picture of two by two pixels on a screen of that size."""
    picture = b"\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0\2\0\2\0\0\2\2\x84\x51\0;"
    return b"GIF89a" + struct.pack("<HH", width & 0xFFFF, height & 0xFFFF) + picture


def icon(claimed=None):
    """An icon that contains one PNG, whose entry declares the given number of bytes."""
    image = png(1, 1, 8, 6, b"\0abcd")
    return struct.pack("<HHHBBBBHHII", 0, 1, 1, 1, 1, 0, 0, 1, 32, claimed or len(image), 22) + image


def small_images():
    yield png(2, 2, 8, 6, (b"\0" + bytes(range(8))) * 2)
    yield png(2, 2, 8, 2, (b"\1" + bytes(6)) * 2)
    yield png(3, 1, 16, 0, b"\0" + bytes(6))
    yield png(4, 2, 1, 3, b"\0\x50" * 2, chunk(b"PLTE", bytes(range(6))))
    yield png(2, 2, 8, 4, (b"\4" + bytes(4)) * 2)
    yield png(8, 8, 8, 0, bytes(200), interlaced=1)
    yield from (bmp(2, 2, 24, bytes(16)), bmp(2, -2, 32, bytes(16)), bmp(4, 1, 8, bytes(4)), bmp(8, 1, 1, bytes(4)))
    yield from PORTABLE
    yield from (XPM, gif(2, 2), icon(), JPEG, SVG)


def large_images(side):
    yield png(side, 1, 8, 0, b"\0")
    yield png(side, side, 1, 0, b"\0")
    yield bmp(side, 1, 24, b"")
    yield bmp(1, -side, 24, b"")
    yield f"P6 {side} {side} 255\n".encode()
    yield f'/* XPM */\nstatic char *a[] = {{\n"{side} {side} 1 1",\n"a c #ff0000",\n"a"}};\n'.encode()
    yield gif(side, side)


def images():
    for image in small_images():
        yield image
        yield image[: len(image) // 2]
    yield icon(claimed=0x7FFFFFF0)
    for side in (LIMIT, LIMIT + 1):
        yield png(side, 1, 8, 0, bytes(1 + side))
        yield png(1, side, 8, 0, bytes(2 * side))
    for side in (LIMIT, LIMIT + 1, 16385, 65535, 0x7FFFFFFF):
        yield from large_images(side)
