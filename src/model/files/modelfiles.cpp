#include <velmodel/modelfiles.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <QtCore/QFileInfo>

#include "files/filesource.h"
#include "files/modelfolder.h"

namespace Atelier::Vel {

namespace {

// A file that was opened by descriptor. It has a name, which a QFile opened by descriptor lacks.
class OpenedFile : public QFile {
public:
    OpenedFile(QString path, Descriptor descriptor)
        : _path(std::move(path)), _descriptor(std::move(descriptor)) {}

    QString fileName() const override { return _path; }
    using QFile::open;
    bool open(OpenMode mode) override { return QFile::open(_descriptor.value(), mode); }

private:
    QString _path;
    Descriptor _descriptor;
};

std::unique_ptr<QFile> openDescriptor(const QString& path, QIODevice::OpenMode mode, Descriptor descriptor) {
    if (!descriptor.isOpen())
        return nullptr;
    auto file = std::make_unique<OpenedFile>(path, std::move(descriptor));
    return file->open(mode) ? std::move(file) : nullptr;
}

// Qt's resources are in memory, and all of them are regular files.
std::unique_ptr<QFile> openResource(const QString& path, QIODevice::OpenMode mode) {
    auto file = std::make_unique<QFile>(path);
    return QFileInfo(path).isFile() && file->open(mode) ? std::move(file) : nullptr;
}

Descriptor openAnywhere(const QFileInfo& info) {
    return openRegularFile(AT_FDCWD, QFile::encodeName(info.filePath()).constData(), LastLink::Follow);
}

bool isRegularFile(const QString& path) {
    struct stat status {};
    return stat(QFile::encodeName(path).constData(), &status) == 0 && S_ISREG(status.st_mode);
}

// For the system, a name ends at its first null character.
bool isName(const QString& path) {
    return !path.isEmpty() && !path.contains(QChar(QChar::Null));
}

} // namespace

ModelFiles::ModelFiles() = default;

ModelFiles::ModelFiles(const QString& folder) : _folder(std::make_shared<ModelFolder>(folder)) {}

QString ModelFiles::folder() const {
    return _folder ? _folder->path() : QString();
}

bool ModelFiles::allows(const QString& path) const {
    return !_folder || _folder->resolve(path).has_value();
}

bool ModelFiles::contains(const QString& path) const {
    if (!isName(path))
        return false;
    const auto way = _folder ? _folder->resolve(path) : QByteArrayList();
    if (!way)
        return false;
    const QFileInfo info(path);
    if (!info.isNativePath())
        return info.isFile();
    return _folder ? _folder->hasFile(*way) : isRegularFile(path);
}

std::unique_ptr<QFile> ModelFiles::open(const QString& path, QIODevice::OpenMode mode) const {
    if (!isName(path))
        return nullptr;
    const auto way = _folder ? _folder->resolve(path) : QByteArrayList();
    if (!way)
        return nullptr;
    const QFileInfo info(path);
    if (!info.isNativePath())
        return openResource(path, mode);
    return openDescriptor(path, mode, _folder ? _folder->open(*way) : openAnywhere(info));
}

std::shared_ptr<ModelSource> ModelFiles::source() const {
    return std::make_shared<FileSource>(*this);
}

} // namespace Atelier::Vel
