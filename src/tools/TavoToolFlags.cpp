#include "tools/TavoToolFlags.h"

namespace {
// Set and read on the GUI thread only.
bool s_testAutomation = false;
bool s_24Hrs = false;
bool s_xt9Enabled = false;
}  // namespace

void tavoToolSetTestAutomationFlag(bool on) { s_testAutomation = on; }
bool tavoToolGetTestAutomationFlag() { return s_testAutomation; }
void tavoToolSet24HrsFormat(bool on) { s_24Hrs = on; }
bool tavoToolGet24HrsFormat() { return s_24Hrs; }
void tavoToolsSetXt9Enabled(bool on) { s_xt9Enabled = on; }
bool tavoToolsGetXt9Enabled() { return s_xt9Enabled; }
