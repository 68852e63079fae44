#pragma once

#include <memory>
#include <utility>

#include <QtCore/QString>

#include <velmodel/modelfiles.h>
#include <velmodel/modelsource.h>

namespace Atelier::Vel {

/// The files of the system as a source.
class FileSource : public ModelSource {
public:
    explicit FileSource(ModelFiles files) : _files(std::move(files)) {}

    const ModelFiles& files() const { return _files; }
    std::unique_ptr<QIODevice> open(const QString& name) override { return _files.open(name); }
    /// The path of a relative name starts from the folder of `base`, and is not cleaned.
    QString resolve(const QString& base, const QString& name) override;

private:
    ModelFiles _files;
};

} // namespace Atelier::Vel
