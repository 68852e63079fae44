#pragma once

#include <memory>

#include <QtCore/QHash>
#include <QtCore/QString>

#include "context/contextgl.h"
#include "state/programinputs.h"

namespace Atelier::Vel {

class Program;

/// What draws need to know of a program, looked up once after it was linked.
struct LinkedProgram {
    QHash<QString, ProgramInput> inputs; ///< by the names of the streams that they read
    int firstCommand = -1;               ///< location of the uniform `velgl_firstCommand`
    int lastInstance = -1;               ///< location of the uniform `velgl_lastInstance`
    int textures = -1;                   ///< location of the uniform `velgl_textures`
    int drawable = -1;                   ///< location of the uniform `velgl_drawable`

    /// `streams` names the streams of attributes that do not read the one of their own name.
    /// Requires: `program` is linked, and a context that knows it is current.
    static std::shared_ptr<const LinkedProgram> of(unsigned int program,
                                                   const QHash<QString, QString>& streams);
};

/// The programs of both stages that a draw uses. For one that VelGL linked nothing is looked up.
class DrawProgram {
public:
    /// Returns: the program that is current, or those of the bound pipeline.
    static DrawProgram current(const ContextGL& gl);
    /// Returns: `program`; no program if the current context does not know it.
    static DrawProgram of(const ContextGL& gl, const Program& program);

    bool isNull() const { return _vertex.name == 0; }
    unsigned int vertexName() const { return _vertex.name; }
    ProgramInput input(const QString& name) const;
    /// Returns: what was looked up of the program with the vertex stage; null if other code linked it.
    const std::shared_ptr<const LinkedProgram>& linked() const { return _vertex.linked; }
    /// Sets `velgl_firstCommand` in the vertex stage.
    void setFirstCommand(int number) const noexcept;
    /// Sets `velgl_drawable` in a program that VelGL linked, if it has that uniform.
    void setDrawable(int number) const noexcept;
    /// Sets `velgl_lastInstance` in the vertex stage.
    void setLastInstance(int number) const noexcept;
    /// Sets `velgl_textures` in both stages.
    void setTextures(int bits) const noexcept;

private:
    struct Stage {
        unsigned int name = 0;
        std::shared_ptr<const LinkedProgram> linked; ///< null if other code linked the program
        int firstCommand = -1;
        int lastInstance = -1;
        int textures = -1;
    };

    static Stage stageOf(unsigned int name, std::shared_ptr<const LinkedProgram> linked);
    static Stage stageOf(const ContextGL& gl, unsigned int name);
    void set(const Stage& stage, int location, int value) const noexcept;

    Stage _vertex;
    Stage _fragment;          ///< of a pipeline
    bool _isPipeline = false; ///< else one program has both stages, and is current during the draw
};

} // namespace Atelier::Vel
