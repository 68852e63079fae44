"""Fails when a source includes against the direction in which the rooms of the libraries depend on each other.

Usage: includes.py ROOT | includes.py --self-test

A room is a folder below src/model or velgl/src. Each one lists the rooms that it may include; it may include its own files,
too. An exported header counts as the room that defines what it declares.
"""

import pathlib
import re
import sys
import tempfile

MODEL = {
    ".": [],
    "memory": [],
    "streams": ["memory", "."],
    "geometry": ["memory", "streams"],
    "geometry/merging": ["geometry", "memory", "streams"],
    "geometry/picking": [],
    "geometry/shapes": ["geometry", "geometry/merging", "memory", "streams"],
    "geometry/smoothing": ["geometry", "geometry/merging", "memory", "streams"],
    "geometry/triangulation": ["geometry", "memory", "streams"],
    "files": ["."],
    "textures": ["files", "."],
    "mesh": ["geometry", "geometry/merging", "geometry/triangulation", "streams", "memory", "."],
    "drawdata": ["mesh", "geometry", "geometry/merging", "geometry/picking", "geometry/smoothing", "geometry/triangulation",
                 "streams", "memory", "."],
    "upload": ["textures", "drawdata", "mesh", "streams", "memory", "."],
    "builder": ["upload", "drawdata", "mesh", "streams", "memory", "."],
    "import/diagnostics": ["import/text"],
    "import/references": ["import/diagnostics", "files", "."],
    "import/text": [],
    "import/obj": ["import/text", "mesh"],
    "import/obj/simd": ["import/obj", "import/text"],
    "import/mtl": ["import/diagnostics", "import/references", "import/text", "files", "mesh", "."],
    "check": ["import", "import/diagnostics", "import/references", "import/mtl", "import/obj", "import/text", "textures", "files",
              "drawdata", "mesh", "geometry/shapes", "geometry/triangulation", "memory", "."],
    "import": ["import/diagnostics", "import/references", "textures", "import/mtl", "import/obj", "import/text", "files", "builder", "upload", "drawdata", "mesh",
               "geometry/smoothing", "streams", "memory", "."],
}
MODEL_HEADERS = {
    "modeldatastream.h": "streams", "modeldataarray.h": "streams", "triangulation.h": "geometry", "loadprogress.h": "drawdata",
    "drawdata.h": "drawdata", "picking.h": "drawdata", "modelbuilder.h": "builder", "modelfiles.h": "files", "modelsource.h": "files", "textureloader.h": "textures",
    "objloader.h": "import", "loadoptions.h": "import", "loadreport.h": "import/diagnostics",
    "loaddiagnostic.h": "import/diagnostics",
    "decodedtextures.h": "textures", "modelcheck.h": "check",
}
# Materials are VelGL's instance data, and white maps its texture references. The shared pointer is a template without OpenGL.
MODEL_WITH_VELGL = {"upload", "textures", "mesh", "drawdata", "builder", "check", "import", "import/mtl"}
VELGL_FOR_ALL = {"sharedpointer.h"}
PURE = re.compile(r"QtDebug|QDebug|QLoggingCategory|QMessageLogger|QRandomGenerator")
PURE_EXCEPTIONS = {"geometry/triangulation/polygondump.cpp"}

VELGL = {
    "context": [],
    "state": ["context"],
    "objects": ["state", "context"],
    "instances": ["objects", "state", "context"],
    "drawing": ["instances", "objects", "state", "context"],
}

# The sources that a build without headless contexts leaves out.
VELGL_WITH_EGL = {"context/egldisplays.cpp", "context/headlesscontext.cpp"}

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)


def sources(folder):
    return sorted(path for path in folder.rglob("*") if path.suffix in (".h", ".cpp"))


def room_of(path):
    return str(pathlib.PurePosixPath(path).parent)


def violations_in_rooms(base, rooms):
    """Includes of another room's files that its list does not have; and files outside of all rooms."""
    for path in sources(base):
        name = path.relative_to(base).as_posix()
        room = room_of(name)
        if room not in rooms:
            yield f"{path}: no room of that name is listed"
            continue
        for quote, target in INCLUDE.findall(path.read_text()):
            if quote == '"' and room_of(target) != room and room_of(target) not in rooms[room]:
                yield f"{path}: {room} must not include {target}"


def violations_of_model(base):
    for path in sources(base):
        name = path.relative_to(base).as_posix()
        room = room_of(name)
        text = path.read_text()
        for quote, target in INCLUDE.findall(text):
            folder, _, header = target.rpartition("/")
            if folder == "velmodel" and header in MODEL_HEADERS:
                owner = MODEL_HEADERS[header]
                # A room inside another may include the exported headers of the outer one.
                if owner != room and owner not in MODEL[room] and not room.startswith(owner + "/"):
                    yield f"{path}: {room} must not include {target}"
            if folder == "velgl" and room not in MODEL_WITH_VELGL and header not in VELGL_FOR_ALL:
                yield f"{path}: {room} must not include VelGL"
            if folder in ("epoxy", "GL") or target.startswith("QtGui/QOpenGL"):
                yield f"{path}: VelModel must not include OpenGL itself"
        if room.startswith("geometry") and name not in PURE_EXCEPTIONS and PURE.search(text):
            yield f"{path}: geometry must not log or draw random numbers"


def violations_of_headers(root):
    """What exported headers must keep from their clients."""
    for base in (root / "include", root / "velgl/include"):
        for path in sources(base):
            for _, target in INCLUDE.findall(path.read_text()):
                if target.startswith(("epoxy/", "GL/", "EGL/", "QtGui/QOpenGL")):
                    yield f"{path}: exported headers must not include {target}"
                if base.parent.name == "velgl" and target.startswith("velmodel/"):
                    yield f"{path}: VelGL must not include VelModel"


def violations(root):
    found = [*violations_in_rooms(root / "src/model", MODEL), *violations_of_model(root / "src/model"),
             *violations_in_rooms(root / "velgl/src", VELGL), *violations_of_headers(root)]
    for path in sources(root / "velgl/src"):
        if re.search(r'#include ["<]velmodel/', path.read_text()):
            found.append(f"{path}: VelGL must not include VelModel")
        if path.relative_to(root / "velgl/src").as_posix() not in VELGL_WITH_EGL and \
                re.search(r'#include ["<](EGL|epoxy/egl)', path.read_text()):
            found.append(f"{path}: only sources of headless contexts may include EGL")
    return found


def self_test():
    """Each planted include is found, and nothing else is."""
    planted = {
        "src/model/geometry/normals.cpp": '#include "mesh/mesh.h"',
        "src/model/geometry/merging/keys.h": '#include "geometry/triangulation/winding.h"',
        "src/model/geometry/log.cpp": "#include <QtCore/QtDebug>",
        "src/model/memory/block.cpp": "#include <velmodel/modeldatastream.h>",
        "src/model/drawdata/gl.cpp": "#include <epoxy/gl.h>",
        "src/model/streams/view.cpp": "#include <velgl/texture.h>",
        "src/model/upload/back.cpp": '#include "builder/modelbuilderdata.h"',
        "src/model/attic/old.cpp": "",
        "velgl/src/context/table.cpp": '#include "objects/texture.h"',
        "velgl/src/state/model.cpp": "#include <velmodel/drawdata.h>",
        "velgl/src/context/native.cpp": "#include <EGL/egl.h>",
        "include/velmodel/gl.h": "#include <epoxy/gl.h>",
        "velgl/include/velgl/model.h": "#include <velmodel/drawdata.h>",
    }
    allowed = {
        "src/model/import/loader.cpp": '#include "mesh/mesh.h"\n#include "import/obj/reader.h"\n#include <velmodel/objloader.h>',
        "src/model/geometry/triangulation/polygondump.cpp": "#include <QtCore/QtDebug>",
        "src/model/drawdata/cut.cpp": "#include <velmodel/triangulation.h>",
        "velgl/src/context/headlesscontext.cpp": "#include <EGL/egl.h>",
        "velgl/src/drawing/draw.cpp": '#include "context/table.h"\n#include <epoxy/gl.h>',
    }
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name, text in {**planted, **allowed}.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text)
        found = violations(root)
        named = {line.split(":")[0] for line in found}
        return [f"not found: {name}" for name in planted if str(root / name) not in named] + \
               [line for line in found if line.split(":")[0] not in {str(root / name) for name in planted}]


def main():
    argument = sys.argv[1]
    found = self_test() if argument == "--self-test" else violations(pathlib.Path(argument))
    print("\n".join(found))
    return bool(found)


sys.exit(main())
