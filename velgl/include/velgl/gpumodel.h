#pragma once

#include <functional>
#include <memory>

#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QVector3D>

#include <velgl/drawoptions.h>
#include <velgl/velgl_export.h>

namespace Atelier::Vel {

class DrawBuffers;
class InstanceDataCollection;
class Texture;

/// A model on the GPU: drawables, each with its collections of materials and instances and the names of its
/// commands. Drawables are numbered from 0 in the order in which they are added, commands of a drawable from
/// 0 in the order of its command list. Numbers do not change; that of a drawable that was removed stays
/// unused until clear().
///
/// Between two draws, InstanceDataCollection::set() changes the material or an instance of a command, and
/// DrawBuffers::setVisibility() hides or shows it.
///
/// A model belongs to the contexts that share with the one in which its buffers were filled. In others, and
/// when those are gone, it can be drawn again after its buffers were filled again, see setRefill().
///
/// Threads: the destructor may run on any thread, with or without a context, while no other function of the
/// model runs. draw(), bounds() and isUsable() are called on the thread of the current context, all other
/// functions on that thread or before a context is there.
class VELGL_EXPORT GPUModel {
public:
    /// An axis-aligned box, in the units of the positions.
    struct Bounds {
        QVector3D minimum;    ///< smallest coordinate on each axis
        QVector3D maximum;    ///< largest coordinate on each axis
        bool isValid = false; ///< false when the box encloses no position; both corners are 0 then
    };

    /// Fills the existing buffers of the drawables in the current context, by their upload functions, with
    /// content of the same size.
    /// Returns: whether it did.
    using Refill = std::function<bool(GPUModel& model)>;

    /// Makes the texture for a path, or null if there is none. The model keeps it as long as it lives.
    using TextureLoader = std::function<std::shared_ptr<Texture>(const QString& path)>;

    /// Makes a model without drawables.
    GPUModel();
    /// Deletes all drawables and collections, see BufferObject for their GL names.
    ~GPUModel();
    GPUModel(const GPUModel&) = delete;
    GPUModel& operator=(const GPUModel&) = delete;

    /// Adds a drawable. The model takes ownership of all three objects; `buffers` loses its QObject parent.
    /// Either collection may be null. `instanceCount` multiplies the instance count of every command; below 0
    /// it counts as 0. Instance i of command c has item c * instanceCount + i of `instances`; an item that is
    /// missing reads as zeros. A shader gets that number from velglInstanceNumber(). `key` is stored for the
    /// caller. A vertex array without a label is labelled "drawable 0" and so on.
    /// Returns: the number of the drawable. -1 when `buffers` is null or was added before; the collections
    /// are deleted then.
    int add(DrawBuffers* buffers, int instanceCount, InstanceDataCollection* materials,
            InstanceDataCollection* instances, const quint64& key);
    /// Deletes a drawable with its collections and names. The others keep their numbers, so filters and
    /// numbers that the caller has stay right. A function that a draw calls, such as a loader, may call it:
    /// the drawable is deleted when the draw has ended.
    /// Returns: false if there is no such drawable; a warning names the model the first time.
    bool remove(int drawable);
    /// Removes all drawables, so that the next one has number 0, the function of setRefill(), and the
    /// textures that the model's loader has made. The label and the loader stay.
    void clear();
    /// Sets the name of the material of a command, in place of an earlier one. Does nothing when there is no
    /// such drawable; `command` is not checked, so names may be set ahead of the commands.
    void addMaterialName(int drawable, int command, const QString& name);
    /// Sets the name of the object that a command belongs to; otherwise as addMaterialName().
    void addObjectName(int drawable, int command, const QString& name);

    /// Sets the name under which warnings mention this model; null by default.
    void setLabel(const QString& label);
    /// Returns: the name that setLabel() set.
    QString label() const;

    /// Sets the function that draw() calls when a buffer of the model has no content in the current context:
    /// it belongs to contexts that are gone, or to others that do not share. Buffers that the drawables have
    /// in several groups of contexts stay filled in each. The function has to restore the client's state and
    /// the current context; what it throws passes through draw(). An empty function for none.
    void setRefill(Refill refill);
    /// Returns: the function that setRefill() set, for example to be called by a further one.
    Refill refill() const;
    /// Returns: whether a context is current in which every buffer that was filled has its content.
    bool isUsable() const;

    /// Sets the function that loads the textures of this model's materials by path, in place of the loader of
    /// the TextureManager; an empty function for none. It is called once for each path, by the first draw(),
    /// with the context current. The textures are shared by the materials of the model and released with it,
    /// or with the next setTextureLoader(), which also has all paths loaded again. A texture without a label
    /// is labelled with its path. A path for which the function returns null is drawn white, after one
    /// warning. The unpack settings of the client are restored after it; other state, and the current
    /// context, are the function's to restore. What it throws passes through draw().
    void setTextureLoader(TextureLoader loader);

    /// Returns: the number of drawables, with those that were removed: the number of the next one.
    int drawableCount() const;
    /// Returns: the drawable of that number, which the model owns; null when there is none, or it was
    /// removed.
    DrawBuffers* drawable(int index) const;
    /// Returns: the materials of a drawable, which the model owns; null when it has none or does not exist.
    InstanceDataCollection* materials(int drawable) const;
    /// Returns: the instances of a drawable, which the model owns; null when it has none or does not exist.
    InstanceDataCollection* instances(int drawable) const;
    /// Returns: the key that add() was given; 0 when there is no such drawable.
    quint64 key(int drawable) const;
    /// Returns: the name that addMaterialName() set; null when there is none.
    QString materialName(int drawable, int command) const;
    /// Returns: the name that addObjectName() set; null when there is none.
    QString objectName(int drawable, int command) const;

    /// Computes the box around all finite positions that the commands draw, from the stream named
    /// `positionAttribute`. Hidden commands do not count. Missing coordinates of a stream with fewer than
    /// three components are 0. The materials' and instances' values, such as a placement, are not applied.
    /// The result follows each change of commands, indices and streams, and each upload into their buffers. A
    /// change of a buffer by other means, such as OpenGL functions that the client calls with its name, is
    /// not detected. Returns: an invalid box when there are no such positions, and when the buffers cannot be
    /// read back. Cost: the boxes of index ranges are kept until the buffers change. A call for ranges with
    /// known boxes makes no OpenGL call, whether the result is valid or not. Otherwise the call waits for the
    /// GPU, reads the index and position buffers of that drawable back, and is linear in the number of
    /// indices of the new ranges. Buffers of a class derived from BufferObject are read back by each call.
    Bounds bounds(const QString& positionAttribute = QStringLiteral("va_Vertex"));

    /// Sets the boxes of the commands of a drawable, in the coordinates of its positions: box c for command
    /// c. UploadOptions::commandBounds of VelModel does that. Boxes that are not finite, or whose minimum
    /// exceeds the maximum, become invalid. VelGL does not compare them with the positions.
    /// Without such a drawable it does nothing; a warning names the model the first time.
    void setCommandBounds(int drawable, const QVector<Bounds>& bounds);
    /// Returns: the box that setCommandBounds() set for a command; an invalid one if there is none.
    Bounds commandBounds(int drawable, int command) const;
    /// Computes the box around the boxes of all commands that are shown, where their instances place them:
    /// each is transformed by the value `matrixMember` of the command's instances, taken as an affine matrix.
    /// An instance without that value, or that is missing, draws nothing and does not count. The boxes of a
    /// drawable without instances, or whose plan has no such member of type Mat4, are taken as they are. The
    /// result follows each change of instances, commands, their visibility and the drawables. It encloses the
    /// transformed boxes, so it may be larger than the box of the transformed positions.
    /// Returns: an invalid box if no command has a box.
    /// Cost: no OpenGL call. Linear in the commands and instances of the drawables that have changed since
    /// the last call with the same member.
    Bounds placedBounds(const QString& matrixMember = QStringLiteral("ModelMatrix"));

    /// Draws all drawables in order with the current program or program pipeline. See shaderInterface() and
    /// docs/velgl.md for what a shader finds where. All bindings are put back; the uniforms
    /// `velgl_firstCommand`, `velgl_lastInstance` and `velgl_textures` of the program are set. A drawable
    /// whose indices, commands, materials or instances the driver could not store draws nothing, after one
    /// warning, and tries again with the next call. A texture that cannot be used is drawn as white. A model
    /// whose buffers have lost their content draws nothing, after one warning for each group of contexts,
    /// unless its refill function fills them. A path is looked up once for each loader, not for each draw.
    /// Whatever is thrown on the way, by a client's function or for lack of memory, the state of the client
    /// is restored. A call by a function that draw() or bounds() of the same model calls does nothing, after
    /// one warning. Requires: a current context and program; else it draws nothing. Cost: for each run of
    /// consecutive commands with the same textures, one glMultiDrawElementsIndirect, or one for each command
    /// where the driver has no shader draw parameters. The first draws make, load and upload what is missing.
    /// After that each draw uploads the bytes that have changed since the last one, see
    /// InstanceDataCollection::set() and DrawBuffers::setVisibility(); nothing is allocated, and nothing is
    /// asked of OpenGL besides what StatePolicy says, unless other code has linked the program.
    void draw();
    /// The same with options, see DrawOptions.
    void draw(const DrawOptions& options);

private:
    class Use;
    struct Data;
    std::unique_ptr<Data> _data;
};

} // namespace Atelier::Vel
