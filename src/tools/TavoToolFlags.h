#pragma once
#include "tgui_export.h"
// Process-wide switches that the core sets through configuration pairs and
// that widgets read when they decide how to behave.

// Test automation: the UI report and the typed-text commands only act while set.
TGUI_EXPORT void tavoToolSetTestAutomationFlag(bool on);
TGUI_EXPORT bool tavoToolGetTestAutomationFlag();

// 24-hour clock.
TGUI_EXPORT void tavoToolSet24HrsFormat(bool on);
TGUI_EXPORT bool tavoToolGet24HrsFormat();

// Predictive text entry.
TGUI_EXPORT void tavoToolsSetXt9Enabled(bool on);
TGUI_EXPORT bool tavoToolsGetXt9Enabled();
