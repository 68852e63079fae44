"""Writes PNG files."""

import struct
import zlib

GREY, RGB, INDEXED, RGBA = 0, 2, 3, 6
_CHANNELS = {GREY: 1, RGB: 3, INDEXED: 1, RGBA: 4}


def chunk(kind, data):
    """One chunk of a PNG file."""
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def encode(width, height, colour_type, pixels, palette=None):
    """The bytes of a PNG file with 8 bits per channel; `pixels` holds the rows from the top, without padding."""
    stride = width * _CHANNELS[colour_type]
    assert len(pixels) == stride * height
    rows = b"".join(b"\0" + pixels[row * stride : (row + 1) * stride] for row in range(height))
    chunks = chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, colour_type, 0, 0, 0))
    if palette is not None:
        chunks += chunk(b"PLTE", bytes(value for colour in palette for value in colour))
    return b"\x89PNG\r\n\x1a\n" + chunks + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b"")
