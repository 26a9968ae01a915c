#pragma once

#include "storage/projectfile.h"

class ChromaxisDocument;

// The document as a project holds it, and back. Installing replaces the whole state at once
// and starts a fresh history, as opening a project does.
namespace DocumentProject {

ProjectData capture(const ChromaxisDocument &document);
void install(ChromaxisDocument &document, const ProjectData &data);

} // namespace DocumentProject
