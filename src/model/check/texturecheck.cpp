#include "check/texturecheck.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtGui/QImageReader>

#include "textures/imagereading.h"

namespace Atelier::Vel {

namespace {

constexpr int kLargestSide = 16'384; // which OpenGL 4.3 guarantees
// More paths would hide the others.
constexpr int kMaxListedPaths = 16;

int largestSideOfAny() {
    return kLargestSide;
}

QString folderOf(const QString& file) {
    return QFileInfo(file).dir().absolutePath();
}

} // namespace

TextureCheck::TextureCheck(const ModelFiles& files, const QString& model, const QStringList& searchPaths,
                           FindingLog& log)
    : _files(files),
      _source(files.source()),
      _modelFolder(folderOf(model)),
      _finder(files, searchPaths),
      _log(log) {}

void TextureCheck::report(CheckCode code, const QString& name, const FindingPlace& place,
                          const QString& message) {
    _log.add(code, place, [&](CheckFinding& finding) {
        finding.text = name;
        finding.message = message;
    });
}

void TextureCheck::examine(const QString& library, const QStringList& names, const FindingPlace& place) {
    const QStringList folders = {folderOf(library), _modelFolder};
    const auto found = _finder.find(folders, names);
    if (!found)
        return reportMissing(folders, names, place);
    if (_examined.contains(found->path))
        return;
    _examined.insert(found->path);
    examineImage(found->path, found->name, place);
}

void TextureCheck::reportMissing(const QStringList& folders, const QStringList& names,
                                 const FindingPlace& place) {
    if (_log.isFull(CheckCode::TextureMissing))
        return _log.count(CheckCode::TextureMissing);
    QStringList paths = _finder.candidates(folders, names);
    const int unlisted = paths.size() - kMaxListedPaths;
    if (unlisted > 0)
        paths = paths.mid(0, kMaxListedPaths) << QStringLiteral("%1 more").arg(unlisted);
    const QString& name = names.first();
    report(CheckCode::TextureMissing, name, place,
           QStringLiteral("'%1': no such file; tried: %2").arg(name, paths.join(QStringLiteral(", "))));
}

void TextureCheck::examineImage(const QString& path, const QString& name, const FindingPlace& place) {
    const std::unique_ptr<QIODevice> file = openMaterialFile(*_source, path);
    QImageReader reader(file.get());
    const QSize size = file && mayBeRead(reader, *_source) ? reader.size() : QSize();
    if (size.isValid() && !isDecodable(size, kLargestSide))
        return report(
            CheckCode::TextureTooLarge, name, place,
            QStringLiteral("'%1' has %2 x %3 pixels; the limits are %4 for a side and 1 GiB for all")
                .arg(name, QString::number(size.width()), QString::number(size.height()),
                     QString::number(kLargestSide)));
    if (size.isValid() && decodedBytes(size) > kMaxDecodedBytes) {
        _notExamined.append(QStringLiteral("The pixels of '%1', because it is large").arg(path));
        return;
    }
    if (readMaterialImage(*_source, path, largestSideOfAny).isNull())
        report(CheckCode::TextureUnreadable, name, place,
               QStringLiteral("'%1' cannot be read as an image").arg(name));
}

} // namespace Atelier::Vel
