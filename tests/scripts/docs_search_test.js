// Tests the search of the API reference. docs_test.sh runs it after lunr.js, the texts and reference_search.js.
var index = buildIndex(searchTexts);

function urlsOf(query) {
  return search(index, searchTexts, stemsOf(query)).map(function (entry) {
    return entry.url.replace(/#g?a[0-9a-f]*$/, "");  // the place of a function on its page
  });
}

function expect(condition, message) {
  if (!condition) throw new Error(message);
}

// For each query, pages that its results must include, the best result first.
var cases = {
  "locale": ["guarantees.html#guarantees_locale", "group__family__str.html", "behaviour.html#behaviour_datetime_12"],
  "threads": ["guarantees.html#guarantees_threads", "group__family__process.html", "index.html"],
  "thread": ["guarantees.html#guarantees_threads"],
  "exceptions": ["guarantees.html#guarantees_exceptions", "group__family__xmlparser.html"],
  "Moon phase": ["group__family__moonphase.html", "classzn__lib_1_1MoonPhase.html"],
  "rightPad": ["group__family__str.html", "behaviour.html#behaviour_str_1"],
  "pad": ["behaviour.html#behaviour_str_3", "group__family__str.html"],
  "zn_lib::IPv4::set": ["classzn__lib_1_1IPv4.html"],
  "zn_shell.h": ["zn__shell_8h.html"]
};
Object.keys(cases).forEach(function (query) {
  var found = urlsOf(query);
  cases[query].forEach(function (url) {
    expect(found.indexOf(url) >= 0, "\"" + query + "\" does not find " + url + ", but " + found.slice(0, 10));
  });
  expect(found[0] === cases[query][0], "\"" + query + "\" finds " + found[0] + " first");
});
expect(urlsOf("locale").length < searchTexts.length / 4, "\"locale\" finds almost everything");
["", "the", "::", "quaternion", "locale quaternion"].forEach(function (query) {
  expect(urlsOf(query).length === 0, "\"" + query + "\" finds " + urlsOf(query)[0]);
});
print("The search finds the pages for " + Object.keys(cases).length + " queries");
