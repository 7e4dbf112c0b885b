// The standard functions a proxy auto-config script may call, written from
// their published definitions. Name resolution, the machine's address, shell
// patterns and the clock are native; the rest is script, evaluated once per
// context before the deployed script.
#include "PacHelpers.h"

#include <arpa/inet.h>
#include <atomic>
#include <cstring>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>

#include "PacHeap.h"
#include "pac.h"

namespace {
std::atomic<pac_resolver_fn> g_resolver{nullptr};

int systemResolve(const char* host, char* out, size_t outSize)
{
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host, nullptr, &hints, &found) != 0 || !found)
        return 0;
    int ok = 0;
    for (addrinfo* a = found; a && !ok; a = a->ai_next) {
        if (a->ai_family == AF_INET) {
            const auto* in = reinterpret_cast<const sockaddr_in*>(a->ai_addr);
            ok = inet_ntop(AF_INET, &in->sin_addr, out, socklen_t(outSize)) != nullptr;
        }
    }
    freeaddrinfo(found);
    return ok;
}

// dnsResolve(host): the host's IPv4 address as text, or null.
duk_ret_t jsDnsResolve(duk_context* ctx)
{
    const char* host = duk_to_string(ctx, 0);
    char address[INET_ADDRSTRLEN + 16] = {};
    pac_resolver_fn resolver = g_resolver.load();
    const int ok = host && *host && std::strlen(host) < 1024
                   && (resolver ? resolver(host, address, sizeof address) : systemResolve(host, address, sizeof address));
    address[sizeof address - 1] = '\0';
    if (ok && *address)
        duk_push_string(ctx, address);
    else
        duk_push_null(ctx);
    return 1;
}

// myIpAddress(): the first IPv4 address of an interface that is up and not
// the loopback; the loopback address when there is none.
duk_ret_t jsMyIpAddress(duk_context* ctx)
{
    char address[INET_ADDRSTRLEN] = "127.0.0.1";
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) == 0) {
        for (ifaddrs* i = list; i; i = i->ifa_next) {
            if (!i->ifa_addr || i->ifa_addr->sa_family != AF_INET || !(i->ifa_flags & IFF_UP)
                || (i->ifa_flags & IFF_LOOPBACK))
                continue;
            const auto* in = reinterpret_cast<const sockaddr_in*>(i->ifa_addr);
            if (inet_ntop(AF_INET, &in->sin_addr, address, sizeof address))
                break;
        }
        freeifaddrs(list);
    }
    duk_push_string(ctx, address);
    return 1;
}

// Shell pattern: "*" any run of characters, "?" one character, everything
// else itself. Linear in practice: one remembered star, no recursion.
bool shellMatch(const char* s, size_t sn, const char* p, size_t pn)
{
    size_t si = 0, pi = 0;
    size_t star = size_t(-1), resume = 0;
    while (si < sn) {
        if (pi < pn && (p[pi] == '?' || p[pi] == s[si])) {
            ++si;
            ++pi;
        } else if (pi < pn && p[pi] == '*') {
            star = pi++;
            resume = si;
        } else if (star != size_t(-1)) {
            pi = star + 1;
            si = ++resume;
        } else {
            return false;
        }
    }
    while (pi < pn && p[pi] == '*')
        ++pi;
    return pi == pn;
}

duk_ret_t jsShExpMatch(duk_context* ctx)
{
    duk_size_t sn = 0, pn = 0;
    const char* s = duk_to_lstring(ctx, 0, &sn);
    const char* p = duk_to_lstring(ctx, 1, &pn);
    duk_push_boolean(ctx, shellMatch(s, sn, p, pn));
    return 1;
}

// The clock of the date and time helpers, in ms since 1970.
duk_ret_t jsNow(duk_context* ctx)
{
    PacHeap* heap = pacHeapOf(ctx);
    if (heap && heap->fixedNow >= 0) {
        duk_push_number(ctx, heap->fixedNow);
        return 1;
    }
    timeval tv{};
    gettimeofday(&tv, nullptr);
    duk_push_number(ctx, double(tv.tv_sec) * 1000.0 + double(tv.tv_usec / 1000));
    return 1;
}

// The helpers that need nothing but the language. Each coerces its arguments
// to text or numbers, and answers false for a form its definition lacks.
const char kPrelude[] = R"JS(
(function (g, now) {
  var DAYS = ['SUN', 'MON', 'TUE', 'WED', 'THU', 'FRI', 'SAT'];
  var MONTHS = ['JAN', 'FEB', 'MAR', 'APR', 'MAY', 'JUN', 'JUL', 'AUG', 'SEP', 'OCT', 'NOV', 'DEC'];

  function ipNumber(text) {
    var m = /^(\d{1,3})\.(\d{1,3})\.(\d{1,3})\.(\d{1,3})$/.exec(String(text));
    if (!m) return null;
    var n = 0;
    for (var i = 1; i <= 4; i++) {
      var b = Number(m[i]);
      if (b > 255) return null;
      n = n * 256 + b;
    }
    return n;
  }
  // A trailing "GMT" argument selects universal time; it is taken off.
  function takeGmt(args) {
    var list = Array.prototype.slice.call(args);
    var gmt = list.length > 0 && list[list.length - 1] === 'GMT';
    if (gmt) list.pop();
    return { list: list, gmt: gmt };
  }
  function clock(gmt) {
    var d = new Date(now());
    return gmt ? { year: d.getUTCFullYear(), month: d.getUTCMonth(), day: d.getUTCDate(),
                   weekday: d.getUTCDay(), hour: d.getUTCHours(), minute: d.getUTCMinutes(),
                   second: d.getUTCSeconds() }
               : { year: d.getFullYear(), month: d.getMonth(), day: d.getDate(),
                   weekday: d.getDay(), hour: d.getHours(), minute: d.getMinutes(),
                   second: d.getSeconds() };
  }
  // Inclusive range that wraps around when it ends before it starts.
  function within(value, from, to) {
    return from <= to ? (from <= value && value <= to) : (value >= from || value <= to);
  }

  g.isPlainHostName = function (host) { return String(host).indexOf('.') < 0; };
  g.dnsDomainIs = function (host, domain) {
    host = String(host); domain = String(domain);
    return host.length >= domain.length && host.substring(host.length - domain.length) === domain;
  };
  g.localHostOrDomainIs = function (host, hostdom) {
    host = String(host); hostdom = String(hostdom);
    return host === hostdom || (host.indexOf('.') < 0 && hostdom.indexOf(host + '.') === 0);
  };
  g.isResolvable = function (host) { return g.dnsResolve(host) !== null; };
  g.isInNet = function (host, pattern, mask) {
    var ip = ipNumber(host);
    if (ip === null) {
      var resolved = g.dnsResolve(host);
      ip = resolved === null ? null : ipNumber(resolved);
    }
    var p = ipNumber(pattern), m = ipNumber(mask);
    if (ip === null || p === null || m === null) return false;
    return ((ip & m) >>> 0) === ((p & m) >>> 0);
  };
  g.convert_addr = function (ip) { var n = ipNumber(ip); return n === null ? 0 : n; };
  g.dnsDomainLevels = function (host) { return String(host).split('.').length - 1; };
  g.alert = function () {};

  g.weekdayRange = function () {
    var a = takeGmt(arguments);
    if (a.list.length < 1 || a.list.length > 2) return false;
    var from = DAYS.indexOf(a.list[0]);
    var to = a.list.length === 2 ? DAYS.indexOf(a.list[1]) : from;
    if (from < 0 || to < 0) return false;
    return within(clock(a.gmt).weekday, from, to);
  };

  // dateRange(day | month | year, ...): each half of the arguments names a
  // date by some of day, month and year, in that order and the same in both.
  g.dateRange = function () {
    var a = takeGmt(arguments);
    var n = a.list.length;
    if (n !== 1 && n !== 2 && n !== 4 && n !== 6) return false;
    function kind(v) {
      if (typeof v === 'string' && MONTHS.indexOf(v) >= 0) return 'M';
      if (typeof v !== 'number' || v !== Math.floor(v)) return '';
      if (v >= 1 && v <= 31) return 'D';
      if (v >= 1000 && v <= 9999) return 'Y';
      return '';
    }
    function date(part, shape) {
      var d = 0, m = 0, y = 0;
      for (var i = 0; i < part.length; i++) {
        if (shape[i] === 'D') d = part[i];
        else if (shape[i] === 'M') m = MONTHS.indexOf(part[i]) + 1;
        else y = part[i];
      }
      return y * 10000 + m * 100 + d;
    }
    var half = n === 1 ? 1 : n / 2;
    var first = a.list.slice(0, half), second = n === 1 ? first : a.list.slice(half);
    var shape = first.map(kind).join(''), shape2 = second.map(kind).join('');
    if (shape !== shape2 || ['D', 'M', 'Y', 'DM', 'MY', 'DMY'].indexOf(shape) < 0) return false;
    var c = clock(a.gmt);
    var today = date(shape.split('').map(function (k) {
      return k === 'D' ? c.day : k === 'M' ? MONTHS[c.month] : c.year;
    }), shape);
    return within(today, date(first, shape), date(second, shape));
  };

  // From the start up to, not including, the end ("9, 17" is nine to five),
  // wrapping past midnight; an equal start and end is that one unit.
  function until(value, from, to) {
    if (from === to) return value === from;
    return from < to ? (from <= value && value < to) : (value >= from || value < to);
  }
  // timeRange(hour), (hour1, hour2), (h1, m1, h2, m2), (h1, m1, s1, h2, m2, s2).
  g.timeRange = function () {
    var a = takeGmt(arguments);
    var n = a.list.length;
    if (n !== 1 && n !== 2 && n !== 4 && n !== 6) return false;
    var v = a.list.map(Number);
    for (var i = 0; i < n; i++) if (isNaN(v[i]) || v[i] < 0) return false;
    var c = clock(a.gmt);
    if (n === 1) return c.hour === v[0];
    if (n === 2) return until(c.hour, v[0], v[1]);
    if (n === 4) return until(c.hour * 60 + c.minute, v[0] * 60 + v[1], v[2] * 60 + v[3]);
    return until(c.hour * 3600 + c.minute * 60 + c.second,
                  v[0] * 3600 + v[1] * 60 + v[2], v[3] * 3600 + v[4] * 60 + v[5]);
  };
})(this, __pacNow);
)JS";
}  // namespace

duk_ret_t pacInstallHelpers(duk_context* ctx, void*)
{
    const duk_function_list_entry natives[] = {
        {"dnsResolve", jsDnsResolve, 1},
        {"myIpAddress", jsMyIpAddress, 0},
        {"shExpMatch", jsShExpMatch, 2},
        {"__pacNow", jsNow, 0},
        {nullptr, nullptr, 0},
    };
    duk_push_global_object(ctx);
    duk_put_function_list(ctx, -1, natives);
    duk_pop(ctx);
    duk_push_string(ctx, "pac-helpers");
    duk_compile_lstring_filename(ctx, 0, kPrelude, sizeof kPrelude - 1);
    duk_call(ctx, 0);
    duk_pop(ctx);
    return 0;
}

extern "C" void pac_set_resolver(pac_resolver_fn resolver)
{
    g_resolver = resolver;
}
