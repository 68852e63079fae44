#pragma once

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace Atelier::Vel {

/// One observation of a load: what is wrong with a file, and how it was repaired.
///
/// Lines end with a line feed, as in an editor; a continued line has the number of its first one, and its
/// columns go on behind the joint. Carriage returns and the byte-order mark are no characters, and a tab is
/// one.
struct LoadDiagnostic {
    enum class Code {
        MissingLibrary,    ///< a material library that could not be read is left out
        RelocatedLibrary,  ///< a material library is found by another path than the one in the file
        UndefinedMaterial, ///< a material without a definition has the values of the default material
        MatchedName,       ///< a name is more, or less, than the first word
        MapName,           ///< the file of a map is not named by the first word
        RelocatedTexture,  ///< a texture is found by another path than the one in the file
        UnplacedFace,      ///< a face with a corner that has no position is dropped
        MissingNormals,    ///< corners of a face without a normal have generated ones
        MalformedFace,     ///< a face with a corner that is not an integer is dropped
        UndrawnFace,       ///< faces are not drawn, because nothing defines their material
        MissingPosition,   ///< corners of a face have a position that does not exist, and lie in the origin
        MissingNormal,     ///< corners of a face have a normal that does not exist, and get zeros
        MissingTexCoord,   ///< corners of a face have texture coordinates that do not exist, and get zeros
        UnreadableTexture, ///< a texture may not be read, and is replaced by a white one
        UnreadableFile,    ///< the OBJ file cannot be read
        UnreadableLibrary, ///< a material library cannot be read
        TooLarge,          ///< the file holds more data than a stream can
        Cancelled,         ///< the progress function has cancelled the load
        NoOpenGL,          ///< no context of OpenGL 4.3 or later is current
        NothingToDraw,     ///< nothing of the file can be drawn
    };
    enum class Severity {
        Note,    ///< the file says something in an unusual way, and the load understands it
        Warning, ///< something is missing or lost
        Error,   ///< the load fails
    };

    Code code = Code::MissingLibrary;
    Severity severity = Severity::Warning;
    QString file;    ///< the file that has the fault
    qint64 line = 0; ///< from 1; 0 if it is not known
    int column = 0;  ///< from 1, in decoded characters; 0 if it is not known
    QString text;    ///< the text concerned, as it stands in the file
    QString message; ///< one sentence: the cause, and the repair
};

} // namespace Atelier::Vel
