#pragma once
/*
 * pac: the proxy auto-config evaluator of the phone's software.
 *
 * A script of the proxy auto-config kind defines FindProxyForURL(url, host) and
 * may call the standard helper functions (isPlainHostName, dnsDomainIs,
 * localHostOrDomainIs, isResolvable, isInNet, dnsResolve, myIpAddress,
 * dnsDomainLevels, shExpMatch, weekdayRange, dateRange, timeRange, alert).
 * Each context is a Duktape heap of its own with a memory cap; every run of
 * script code (the script's top level in alloc_ctx, one call in find_proxy)
 * has a time cap. A script that throws, loops or runs out of memory yields
 * null, never a hang or a crash of the caller.
 *
 * Texts returned by read_pacfile and find_proxy are malloc'ed: free() them.
 * A context ends with duk_destroy_heap(), which also releases our bookkeeping.
 */
#include <stddef.h>

#include <duktape.h>

#include "pac_export.h"

#if defined(__cplusplus)
extern "C" {
#endif

/* The script text of the file at path, or NULL (missing, unreadable, empty,
 * not a regular file, larger than 1 MiB or holding a NUL byte). */
PAC_EXPORT char* read_pacfile(const char* path);

/* A context that has run the script's top level and holds a function
 * FindProxyForURL, or NULL (bad script, exception, time or memory cap, no
 * such function). */
PAC_EXPORT duk_context* alloc_ctx(const char* script);

/* FindProxyForURL(url, host) in the context: its string result, or the text
 * "undefined" when it returned anything but a string, or NULL when it threw,
 * ran out of time or memory, or an argument is NULL. */
PAC_EXPORT char* find_proxy(duk_context* ctx, const char* url, const char* host);

/* Limits given to contexts created from now on (0 keeps a value): the time one
 * run of script code may take, and the bytes a context may hold. Defaults:
 * 1000 ms and 16 MiB. */
PAC_EXPORT void pac_set_limits(unsigned timeout_ms, size_t heap_bytes);

/* Name resolution for dnsResolve, isResolvable, isInNet: fills out (at least
 * 16 bytes) with a dotted IPv4 address and returns 1, or returns 0. NULL
 * restores the system resolver. Process-wide. */
typedef int (*pac_resolver_fn)(const char* host, char* out, size_t out_size);
PAC_EXPORT void pac_set_resolver(pac_resolver_fn resolver);

/* The clock of the date and time helpers of this context, in milliseconds
 * since 1970 (UTC); a negative value returns it to the system clock. */
PAC_EXPORT void pac_set_time(duk_context* ctx, double epoch_ms);

/* The last error of the context ("" when none): what the script threw, or why
 * a call was refused; with NULL, why this thread's last alloc_ctx failed.
 * Valid until the next call on the context (or the next alloc_ctx). */
PAC_EXPORT const char* pac_last_error(duk_context* ctx);

#if defined(__cplusplus)
}
#endif
