"""OBJ and MTL text: parts of the samples, and unusual lines."""

from pathlib import Path

SAMPLES = Path(__file__).resolve().parents[2] / "samples"
# Separates the OBJ text of a load from the text of its library, which the OBJ text names m.mtl.
MARKER = b"\n%%mtl%%\n"

ODD_NUMBERS = [
    "0", "-0", "+1", "1.", ".5", "-.5", ".", "-", "+", "1e5", "1E-5", "1e", "1e+", "1e400", "1e-400", "1e-45", "1e40",
    "3.4028235e38", "3.4028236e38", "-3.5e38", "1.17549435e-38", "1.4e-45", "0x10", "inf", "-inf", "nan", "+nan",
    "infinity", "1,5", "1.0abc", "--1", "1-2", "0.1", "16777217", "9007199254740993", "0.30000000000000004",
    "123456789012345678901234567890", "18446744073709551617", "0." + "0" * 60 + "1", "1" + "0" * 40,
    "1e00000000000000001", "\u22121", "\u0661", "1.5/2",
]
ODD_CORNERS = [
    "1", "-1", "0", "-0", "+1", "01", "1/", "1//", "/1", "//1", "1/1", "1//1", "1/1/1", "1/1/1/1", "1/1/1/x", "1/x", "1.0",
    "3#x", "#", "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967297", "999999999", "1000000000", "\\",
    "\u22121", "1/-1/-1", "-1/-1/-1",
]
SPACES = [" ", "  ", "\t", "\v", "\f", "\r", "\u00a0", "\u0085", "\u2000", "\u3000", "\ufeff", "\u200b"]
TEXTS = [
    "", "\n", "\r\n", "v", "vn", "vt", "f", "usemtl", "mtllib", "# comment", "#v 1 2 3", "v# 1 2 3", "V 1 2 3",
    "v 1 2 3\nv 4\nvn\nvt 1\n", "v 7 8 9\nvt 0.5 0.25 1\n", "v 1 2 3 4 5\n", "f 1 2 \\\n 3 4\nv 1 2 3\n",
    "v 1 2 3\rv 4 5 6\r", "f 1 2\r3\n", "v 1 2 3\0 4\n", "usemtl r\u00e9d # note\nusemtl\nusemtl a b\n",
    "mtllib a.mtl b.mtl\nmtllib /abs/m.mtl\nmtllib ../x/../m.mtl\nmtllib \u00e9.mtl\n", "v 1 2 3", "f 1 2 3 # note",
    "v 1 2 3\nv 4 5 6\nvn 0 0 1\nvn 1 0 0\nvt 0 1\nvt 1 0\nf 1/1/1 2/2/2 1//2\nf -1 -2 -1\n",
    "g a b\no cube\ns off\nl 1 2\np 1\nvp 0 0\nf1 2 3\nvnormal\n",
]
MATERIALS = [
    "", "newmtl", "newmtl a b", "newmtl red\nKd 1 0 0\n", "newmtl a\nnewmtl a\nKd 1 1 1\n", "Kd 1 0 0\nnewmtl late\n",
    "newmtl a\nKa 1 1\nKd\nKs a b c\nNs x\nd\nmap_Kd\n", "newmtl a\nKd 1-2-3\nNs 0x10\nd 1,5\nKs 1e40 1e400 1\n",
    "newmtl a#b\nKd 1 0 0#red\nmap_Kd a#b.png\n# Kd 1 1 1\n", "newmtl <default>\nKd 1 2 3\n",
    "newmtl a\nmap_Kd -s 1 1 1 file.png\nmap_Ks my file.png\nmap_Ka /abs/a.png\nmap_Ns ../a/../b.png\n",
    "newmtl a\nKe 1 1 1\nkd 1 0 0\nillum 2\nNEWMTL x\nTr 0.5\nNi 1\n", "newmtl a\rKd 1 0\r 0\n",
    "\u00a0newmtl\u00a0r\u00e9d\u3000\n\u2000Kd\u20001 0\u00850\n", "newmtl a\nKd nan inf -inf\nNs +1\nd -0\n",
    "newmtl a\nKd 1 0 0 0\nKd 0.1 0.2\nKs 5. .5 .\nNs 1e\nd 1e5\n",
]
CUBE = """mtllib m.mtl
v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1
usemtl red\nf 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nusemtl blue\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n"""
LIBRARY = "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\nmap_Kd blue.png\n"
MODELS = [
    ("", ""), (CUBE, LIBRARY), (CUBE, ""), (CUBE.replace("usemtl blue\n", ""), LIBRARY),
    ("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", ""), ("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\nf 1 2\nf 1\nf\nf 0 0 0\n", ""),
    ("v 0 0 0\nv 4 0 0\nv 4 4 0\nv 2 1 0\nv 0 4 0\nf 1 2 3 4 5\nf 5 4 3 2 1\n", ""),
    ("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nvn 0 0 1\nvt 0 0\nf 1/1/1 2/1/1 3/1/1\nf 1//1 2 3\n", ""),
    ("f 1 2 3\nv 0 0 0\nv 1 0 0\nv 0 1 0\n", ""), ("mtllib none.mtl\nv 0 0 0\nf 1 1 1\n", ""),
    ("mtllib m.mtl\nmtllib m.mtl\nmtllib\n", LIBRARY), ("mtllib model.obj\nv 0 0 0\nf 1 1 1\n", ""),
    ("v nan 0 0\nv inf 0 0\nv 0 1 0\nv 1e38 -1e38 1e38\nv 1 1 1\nf 1 2 3\nf 1 2 3 4 5\n", ""),
    ("usemtl late\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nmtllib m.mtl\nf 1 2 3\n", "newmtl late\n"),
    ("v 0 0 0\nv 0 0 0\nv 0 0 0\nv 0 0 0\nv 0 0 0\nf 1 2 3 4 5\nf 1 2 3 4\nf 1 1 1\n", ""),
]


def encoded(text):
    """The text in every encoding that a byte-order mark can announce."""
    yield text.encode()
    yield b"\xef\xbb\xbf" + text.encode()
    for codec, mark in (("utf-16-le", b"\xff\xfe"), ("utf-16-be", b"\xfe\xff"), ("utf-32-le", b"\xff\xfe\0\0"),
                        ("utf-32-be", b"\0\0\xfe\xff")):
        yield mark + text.encode(codec)


def pieces(suffix, lines):
    """The first and some later lines of every sample, including rare statements."""
    for path in sorted(SAMPLES.glob("*/*" + suffix)):
        text = path.read_text().splitlines(keepends=True)
        for start in sorted({0, len(text) // 2, max(len(text) - lines, 0)}):
            yield "".join(text[start:start + lines]).encode()


def obj_texts():
    yield from pieces(".obj", 12)
    for text in TEXTS:
        yield text.encode()
    yield from encoded(TEXTS[-2])
    yield from encoded("v 1 2 3\r\nusemtl r\u00e9d\r\nf 1 2 3")
    for number in ODD_NUMBERS:
        yield f"v 1 {number} 2\nv {number} {number} {number}\nvn {number}\nvt {number} 0\n".encode()
    for corner in ODD_CORNERS:
        yield f"v 0 0 0\nvt 0 0\nvn 0 0 0\nf {corner} 1 {corner}\n".encode()
    for space in SPACES:
        yield f"{space}v{space}1{space}2{space}3{space}\nf 1{space}2 3\n".encode()
    yield b"v 1 2 3\nv 1.5 2.25 -3.125\n" * 20 + b"f 1 2 3\nf 1/1 2/2 3/3\nf 1/1/1 2/2/2 3/3/3\nf 1//1 2//2 3//3\n" * 10
    yield b"f" + b" 1" * 70 + b"\n"
    yield b"usemtl \xc3\nusemtl \xe2\x98\nusemtl \xf0\x9f\x98\nusemtl \xff\x80\xed\xa0\x80\n\xe2\x98"


def mtl_texts():
    yield from pieces(".mtl", 15)
    for text in MATERIALS:
        yield text.encode()
    yield from encoded(MATERIALS[3])
    for number in ODD_NUMBERS:
        yield f"newmtl a\nKd {number} 1 {number}\nNs {number}\nd {number}{number}\n".encode()
    for space in SPACES:
        yield f"{space}newmtl{space}a{space}\nKd{space}1{space}0{space}0\nmap_Kd{space}a{space}b\n".encode()


def lines():
    """Prepends two bytes: the size of the blocks, and the position of the second half of the text in the stream's blocks."""
    texts = [text for text in obj_texts()] + [text for text in mtl_texts()]
    for index, text in enumerate(texts):
        yield bytes([index % 61, 0xEC + index % 20]) + text
    # Byte-order marks and cut sequences at the start of a block of the stream.
    for before in (b"a", "\u00e9".encode()):
        for piece in (b"\xef\xbb\xbf", b"\xe2\x98\x83", b"\xf0\x9f\x98\x80", b"\xe2\x98", b"\xff\xfe", b"\r\n"):
            for after in range(4):
                half = b"x" * after + piece + b"bc\n"
                yield bytes([60, 0xF0 + after]) + (before * len(half))[:len(half)] + half


def models():
    for obj, mtl in MODELS:
        yield obj.encode() + MARKER + mtl.encode()
    for name in ("gear", "mosaic", "oddities", "stairs", "vase"):
        folder = SAMPLES / name
        obj = "".join((folder / f"{name}.obj").read_text().splitlines(keepends=True)[:60])
        obj = obj.replace(f"{name}.mtl", "m.mtl")
        yield obj.encode() + MARKER + (folder / f"{name}.mtl").read_bytes()
