#pragma once

#include "document/documentimage.h"

#include <vector>

// The image whose pixels show the same colours after the palette's entries moved, entry v going
// to place newPlaces[v]: every index v becomes newPlaces[v], and an index past the palette (which
// shows the last entry) becomes the place the last entry went to. An 8-bit image that would need
// an index above 255 (a palette of more than 256 entries) becomes 32-bit indexed, since its
// bytes could not name the new places. Images of other modes, and any image with an empty
// newPlaces, come back as they are. The image's own colour table moves along when it has as many
// entries as newPlaces.
DocumentImage remapIndexes(const DocumentImage &image, const std::vector<int> &newPlaces);
