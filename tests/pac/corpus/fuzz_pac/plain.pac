function FindProxyForURL(url, host) {
  if (isPlainHostName(host) || dnsDomainIs(host, ".local")) return "DIRECT";
  if (shExpMatch(url, "http://*.test/*")) return "PROXY 127.0.0.1:3128; PROXY localhost:3129; DIRECT";
  return "PROXY proxy.corp:8080";
}
