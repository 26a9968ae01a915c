#pragma once

// The image libraries talk: libpng and libjpeg warn through Qt's message handler ("libpng
// warning: iCCP: known incorrect sRGB profile"), GD prints its own warnings. None of it is meant
// for the user, who gets the program's own message when something fails. This keeps that chatter
// out of the way: warnings and debug lines from outside the program's own logging categories are
// dropped, and so are GD's messages. Critical and fatal messages still go out. Setting the
// environment variable CHROMAXIS_LIBRARY_MESSAGES to 1 lets everything through, for debugging.
void quietLibraryMessages();
