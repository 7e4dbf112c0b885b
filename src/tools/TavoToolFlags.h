#pragma once
// Process-wide switches that the core sets through configuration pairs and
// that widgets read when they decide how to behave.

// Test automation: the UI report and the typed-text commands only act while set.
void tavoToolSetTestAutomationFlag(bool on);
bool tavoToolGetTestAutomationFlag();

// 24-hour clock.
void tavoToolSet24HrsFormat(bool on);
bool tavoToolGet24HrsFormat();

// Predictive text entry.
void tavoToolsSetXt9Enabled(bool on);
bool tavoToolsGetXt9Enabled();
