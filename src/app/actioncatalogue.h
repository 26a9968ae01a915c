#pragma once

#include <QKeySequence>

#include <vector>

// One user command: the window slot it triggers (also its object name and the command's name),
// its menu text, status tip, icon under ":res/images/", shortcut, and whether it is checkable.
struct ActionEntry
{
    const char *slot;
    const char *text;
    const char *statusTip;
    const char *icon = nullptr;       // file name under ":res/images/", or nullptr
    const char *shortcut = nullptr;   // portable text, or nullptr
    QKeySequence::StandardKey standardKey = QKeySequence::UnknownKey;
    bool checkable = false;
};

// Every fixed command of the main window, in catalogue order. The generated families (copy
// formats, RGB actions, palette sizes) are built by the window from their own lists.
const std::vector<ActionEntry> &actionCatalogue();

// Menu layouts: slot names; "-" is a separator, "[Title" opens a submenu and "]" closes it.
struct MenuLayout
{
    const char *title;
    std::vector<const char *> items;
};
const std::vector<MenuLayout> &menuLayouts();

struct ToolBarLayout
{
    const char *title;
    const char *settingsKey;
    const char *showSlot;
    std::vector<const char *> items;
};
const std::vector<ToolBarLayout> &toolBarLayouts();
