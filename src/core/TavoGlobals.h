#pragma once
#include "tgui_export.h"
// Set once the phone is going down: from then on the core link and the
// supervision stop acting. One byte, read without locking from every thread.
extern TGUI_EXPORT bool bRebootInitiated;
