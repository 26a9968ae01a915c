#pragma once

#include "storage/projectfile.h"

class ChromaxisDocument;

// The document as a project holds it, and back. Installing replaces the whole state at once
// and starts a fresh history, as opening a project does.
namespace DocumentProject {

ProjectData capture(const ChromaxisDocument &document);
void install(ChromaxisDocument &document, const ProjectData &data);

// The document a file becomes when opened: a project restores its whole state, a palette file
// becomes the palette, anything else is opened as an image. Used by the macro player's command
// line and by project creation.
void open(ChromaxisDocument &document, const QString &path);

} // namespace DocumentProject
