//http://10.1.2.3/x
function FindProxyForURL(url, host) {
  var r = [];
  if (isInNet(host, "10.0.0.0", "255.0.0.0")) r.push("PROXY a:1");
  if (localHostOrDomainIs(host, "localhost.localdomain")) r.push("PROXY b:2");
  if (weekdayRange("MON", "FRI", "GMT") && timeRange(8, 18)) r.push("PROXY c:3");
  if (dateRange(1, "JAN", 31, "DEC") && isResolvable("localhost")) r.push("PROXY d:4");
  r.push(dnsResolve(host) + " " + myIpAddress() + " " + dnsDomainLevels(host));
  return r.join("; ");
}
