#include "import/diagnostics/diagnosticlog.h"

namespace Atelier::Vel {

LoadDiagnostic::Severity severityOf(LoadDiagnostic::Code code) {
    using Code = LoadDiagnostic::Code;
    switch (code) {
    case Code::RelocatedLibrary:
    case Code::MatchedName:
    case Code::MapName:
    case Code::RelocatedTexture:
        return LoadDiagnostic::Severity::Note;
    case Code::MissingLibrary:
    case Code::UndefinedMaterial:
    case Code::UnplacedFace:
    case Code::MissingNormals:
    case Code::MalformedFace:
    case Code::UndrawnFace:
    case Code::MissingPosition:
    case Code::MissingNormal:
    case Code::MissingTexCoord:
    case Code::UnreadableTexture:
        return LoadDiagnostic::Severity::Warning;
    case Code::UnreadableFile:
    case Code::UnreadableLibrary:
    case Code::TooLarge:
    case Code::Cancelled:
    case Code::NoOpenGL:
    case Code::NothingToDraw:
        break;
    }
    return LoadDiagnostic::Severity::Error;
}

} // namespace Atelier::Vel
