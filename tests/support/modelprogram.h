#pragma once

#include <memory>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <gtest/gtest.h>

#include <velgl/program.h>
#include <velgl/shaderinterface.h>

namespace Atelier::Vel::Testing {

/// A program for models of OBJ files: the two shaders, each behind its version and what VelGL declares for
/// it. On failure, fails the test and returns null. Requires: a current context.
inline std::unique_ptr<Program> makeModelProgram(const char* vertexShader, const char* fragmentShader) {
    const ShaderPlans plans{QStringLiteral("OBJMaterial"), QStringLiteral("InstanceInfo")};
    const QByteArray version = "#version 430 core\n";
    QString error;
    auto program =
        Program::fromSource(version + shaderInterface(ShaderStage::Vertex, plans) + vertexShader,
                            version + shaderInterface(ShaderStage::Fragment, plans) + fragmentShader, error);
    EXPECT_TRUE(program) << error.toStdString();
    return program;
}

} // namespace Atelier::Vel::Testing
