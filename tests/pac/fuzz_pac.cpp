// Hostile proxy scripts: the evaluator must answer or refuse within its caps,
// never crash, leak or hang. The script's first line, when it starts with
// "//", gives the URL to ask for. No name is resolved off the machine.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "pac.h"

namespace {
int offlineResolver(const char* host, char* out, size_t size)
{
    if (std::strcmp(host, "localhost") != 0)
        return 0;
    std::strncpy(out, "127.0.0.1", size - 1);
    out[size - 1] = '\0';
    return 1;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static bool once = [] {
        pac_set_limits(150, 8 * 1024 * 1024);
        pac_set_resolver(offlineResolver);
        return true;
    }();
    (void)once;
    if (size > 64 * 1024)
        return 0;
    std::string script(reinterpret_cast<const char*>(data), size);
    if (script.find('\0') != std::string::npos)
        return 0;
    std::string url = "http://directory.test/soap";
    if (script.compare(0, 2, "//") == 0) {
        const size_t end = script.find('\n');
        url = script.substr(2, end == std::string::npos ? std::string::npos : end - 2);
    }
    duk_context* ctx = alloc_ctx(script.c_str());
    if (!ctx)
        return 0;
    pac_set_time(ctx, 1710498620000.0);
    for (const char* host : {"directory.test", "localhost", ""}) {
        char* result = find_proxy(ctx, url.c_str(), host);
        std::free(result);
    }
    pac_set_time(ctx, -1.0);
    std::free(find_proxy(ctx, "http://a/", "a"));
    duk_destroy_heap(ctx);
    return 0;
}
