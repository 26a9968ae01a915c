#pragma once

#include <QByteArray>
#include <QString>

// The text of a generator's shader as the compiler gets it. GLSL has no include of its own, so a
// line `#include "NAME"` is replaced by the resource ":res/shader/NAME" (itself resolved the same
// way): the read-back encoding, the noise's building blocks and the escape-time loop are written
// once and shared by the shaders that need them, while each shader stays one resource named after
// its generator.
namespace ShaderSource {

// The resolved text; empty, with the reason in *error, for a missing resource or an include that
// names itself again.
QByteArray load(const QString &resource, QString *error = nullptr);

} // namespace ShaderSource
