#include "document/documentproject.h"

#include "document/chromaxisdocument.h"
#include "palette/palettelimits.h"

namespace DocumentProject {

ProjectData capture(const ChromaxisDocument &document)
{
    ProjectData data;
    data.palette = document.palette();
    data.paletteFileName = document.paletteFileName();
    data.paletteModified = document.isPaletteModified();
    data.fixedPaletteSize = document.paletteViewSettings().fixedSize;
    data.fillColor = document.paletteViewSettings().fillColor;
    data.builtinIndex = quint32(qMax(0, document.builtinIndex()));
    data.image = document.image();
    data.imageFileName = document.imageFileName();
    data.imageModified = document.isImageModified();
    // Indexes past the last entry (clicks there, a "Full palette" pattern) name no entry, and the
    // palette view ignores them; a project keeps them as the document holds them, so a project
    // reopens with the selection it was saved with.
    for (int i : document.selection())
        if (i >= 0)
            data.selection.insert(data.selection.end(), i);
    return data;
}

void install(ChromaxisDocument &document, const ProjectData &data)
{
    // Refused before the image goes in, so that a refused project changes nothing.
    PaletteLimits::checkLength(data.palette.size());
    ImageState image{data.image, data.imageFileName, data.imageModified};
    document.setImageState(image, true);
    PaletteState palette;
    palette.palette = data.palette;
    palette.fileName = data.paletteFileName;
    palette.paletteModified = data.paletteModified;
    palette.imageModified = data.imageModified;
    palette.builtinIndex = int(data.builtinIndex);
    document.setPaletteState(palette, true);
    PaletteViewSettings settings = document.paletteViewSettings();
    settings.fixedSize = data.fixedPaletteSize;
    // Only the high bytes are stored; the colour comes back opaque.
    settings.fillColor = {data.fillColor.r & 0xFF00u, data.fillColor.g & 0xFF00u, data.fillColor.b & 0xFF00u, 65535};
    document.setPaletteViewSettings(settings, true);
    document.setSelection(data.selection);
    document.clearHistory();
}

} // namespace DocumentProject
