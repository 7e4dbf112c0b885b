#pragma once
// The standard functions of proxy auto-config scripts, installed in a context's
// global object before the script runs.
#include <duktape.h>

// A protected call target: installs the helpers; returns 0.
duk_ret_t pacInstallHelpers(duk_context* ctx, void* udata);
