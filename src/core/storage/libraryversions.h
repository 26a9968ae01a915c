#pragma once

#include <QString>

#include <utility>
#include <vector>

// The libraries the program runs on, each with the version it runs with (for the About box and
// bug reports): Qt, zlib, GIFLIB, libzip, FFmpeg's libraries and SQLite through Qt's driver.
std::vector<std::pair<QString, QString>> libraryVersions();
