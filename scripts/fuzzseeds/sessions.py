"""Calls to a builder: the choice of its streams and its mask, then for each call its number and its arguments."""

import struct

CREATE_ATTRIBUTE, ADD_VALUES, ADD_INDICES, ADD_COUNTS, CREATE_GROUP, ADD_FACES, ASK = 0, 1, 3, 5, 6, 7, 8
CLEAR_OR_UPLOAD, UPLOAD, NORMALS = 9, 10, 11
POSITION, NORMAL, TEXTURE = 0, 1, 2
FLOAT, UNSIGNED_BYTE = 0, 4
GROUP, OTHER_GROUP = 0, 1
MASK = bytes([1])
# The faults of a stream; the numbers between select other faults.
SHORT_INDICES_FOR_ALL, MISSING, LIES = 0, None, range(1, 12)
STREAMS_OF_A_SESSION = 13

OWN_STREAMS = bytes([0])


def client_streams(liars=0, lie=MISSING):
    """`liars` has a bit for every faulty stream."""
    return bytes([1]) + struct.pack("<I", liars) + bytes([0 if lie == MISSING else 8 * lie + 7])


def counted(numbers):
    return bytes([len(numbers), *numbers])


def attribute(name, components, kind, count, values):
    """Declares an empty attribute, then fills it; `components` counts from -1."""
    return bytes([CREATE_ATTRIBUTE, name, kind, components + 1, 1, 1, ADD_VALUES, name, kind, count]) + values


SQUARE = struct.pack("<12f", 0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0)
POSITIONS = attribute(POSITION, 3, FLOAT, 12, SQUARE)
TEXTURE_COORDINATES = attribute(TEXTURE, 2, FLOAT, 8, SQUARE[:32])
COLOURS = attribute(NORMAL, 4, UNSIGNED_BYTE, 8, bytes(range(8)))
CORNERS = bytes([ADD_INDICES]) + counted([0, 1, 2, 0, 2, 3, 0, 1, 2, 3]) + bytes([POSITION])
FACES = bytes([ADD_COUNTS]) + counted([3, 3, 4]) + CORNERS
GROUPS = bytes([CREATE_GROUP]) + struct.pack("<f", 1) + bytes([GROUP, 127, 1])
MORE_GROUPS = bytes([CREATE_GROUP]) + struct.pack("<f", 2) + bytes([OTHER_GROUP, 135, 2])
JOINED = bytes([ADD_FACES]) + counted([0, 2]) + bytes([0, GROUP])
JOINED += bytes([ADD_FACES]) + counted([1, 9]) + bytes([1, POSITION, OTHER_GROUP])
SMOOTH = bytes([NORMALS, 1, NORMAL])
UPLOADED = bytes([UPLOAD, POSITION, 0])
UPLOADED_WITH_IDS = bytes([UPLOAD, POSITION, 1])
CLEARED = bytes([CLEAR_OR_UPLOAD, 0])

SIMPLE = POSITIONS + FACES + GROUPS + JOINED


def texture_corners(indices):
    return bytes([ADD_INDICES]) + counted(indices) + bytes([TEXTURE])


def sessions():
    for streams in (OWN_STREAMS, client_streams()):
        start = streams + MASK + SIMPLE
        yield start + UPLOADED
        yield start + SMOOTH + UPLOADED + UPLOADED + bytes([ASK, GROUP])
        yield start + MORE_GROUPS + JOINED + UPLOADED_WITH_IDS + CLEARED + SIMPLE + UPLOADED
        yield start + TEXTURE_COORDINATES + texture_corners([3, 2, 1, 0]) + UPLOADED
        yield start + COLOURS + bytes([ADD_INDICES]) + counted([0, 1, 40, 255]) + bytes([NORMAL]) + UPLOADED
    whole = POSITIONS + TEXTURE_COORDINATES + texture_corners([0, 1, 2]) + FACES + GROUPS + JOINED + SMOOTH + UPLOADED
    for stream in range(32):
        yield client_streams(liars=1 << stream) + MASK + whole
    yield client_streams(lie=SHORT_INDICES_FOR_ALL) + MASK + SIMPLE + UPLOADED
    for lie in LIES:
        for stream in range(STREAMS_OF_A_SESSION):
            yield client_streams(liars=1 << stream, lie=lie) + MASK + whole
