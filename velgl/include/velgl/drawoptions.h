#pragma once

#include <velgl/drawfilter.h>

namespace Atelier::Vel {

class Program;

/// Who restores the state of OpenGL that a draw changes.
enum class StatePolicy {
    /// The draw does. It asks OpenGL for the state once: at most 16 queries, and four for each texture unit.
    Restored,
    /// The client does, if it needs to. The draw asks OpenGL nothing. Afterwards no vertex array is bound and
    /// primitive restart is disabled; the program, the indirect buffer, the storage bindings, and the
    /// textures and samplers of the units used are those of the last drawable. The active texture unit may be
    /// another one. Where nothing is drawn, only the program and the vertex array change.
    ClientRestores,
};

/// The order in which the commands of a drawable are drawn.
enum class DrawOrder {
    /// As they were given: one multi-draw for each run of commands with the same textures that follow one
    /// another.
    AsGiven,
    /// One multi-draw for each distinct set of textures, in the order of the sets' first commands, and as
    /// given within a set. A drawable of which a command has a base instance of its own, or whose driver
    /// lacks shader draw parameters, is drawn as given.
    ByTextures,
};

/// How GPUModel::draw() draws.
///
/// Whatever the order and the filter, velglCommand() in a shader is the number of the command in the list of
/// its drawable. A draw in another order, or without some commands, may use an indirect buffer of its own, in
/// which the base instance of each command is that number.
/// Threads: a plain value.
struct DrawOptions {
    StatePolicy state = StatePolicy::Restored;
    DrawOrder order = DrawOrder::AsGiven;
    /// Only the commands that pass are drawn. Those with the same textures are drawn together even if others
    /// lie between them that do not pass, except on a drawable for which ByTextures is not possible. What a
    /// drawable needs, its textures included, is made and loaded even if none of its commands passes.
    /// Cost: the first draw with a filter makes a list of the commands of each drawable, in linear time, and
    /// an indirect buffer if that saves draws. Further draws cost what they cost without a filter.
    DrawFilter filter;
    /// The texture unit of the first texture member of a material; the others follow it. The same number is
    /// given to shaderInterface().
    unsigned int firstTextureUnit = 0;
    /// The program to draw with, which is current during the draw. Null for the one that is current, or the
    /// bound program pipeline, which OpenGL is asked for.
    Program* program = nullptr;
};

} // namespace Atelier::Vel
