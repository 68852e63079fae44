#pragma once

#include <map>

#include <velgl/gpumodel.h>
#include <velgl/instancedatacollection.h>
#include <velgl/texture.h>

#include "scenefixture.h"

namespace Atelier::Vel::Testing {

/// A test that draws rows whose commands have textures of one colour.
class TexturedFixture : public SceneFixture {
protected:
    void TearDown() override {
        _textures.clear();
        SceneFixture::TearDown();
    }

    /// Adds a row whose commands have these textures, "first" of each material; no texture for black.
    void addTextured(GPUModel& model, const QList<QColor>& colors, quint64 key = 0) {
        QList<InstanceData> materials;
        QList<InstanceData> instances;
        for (const QColor& color : colors) {
            InstanceData material = coloredMaterial(Qt::white);
            if (color != Qt::black)
                material.setTexture(QStringLiteral("first"), textureOf(color));
            materials << material;
            instances << movedInstance({});
        }
        model.add(triangleRow(colors.size()), 1,
                  new InstanceDataCollection(QStringLiteral("TestMaterial"), materials),
                  new InstanceDataCollection(QStringLiteral("TestInstance"), instances), key);
    }
    Texture* textureOf(const QColor& color) {
        std::unique_ptr<Texture>& texture = _textures[color.rgba()];
        if (!texture)
            texture = Texture::ofColor(color);
        return texture.get();
    }
    QList<QColor> drawnWith(GPUModel& model, int cells, const DrawOptions& options) const {
        return colorsAfter(cells, [&] { model.draw(options); });
    }

    std::map<QRgb, std::unique_ptr<Texture>> _textures;
};

} // namespace Atelier::Vel::Testing
