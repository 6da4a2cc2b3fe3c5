// Searches the API reference in the browser, without a server. lunr.js builds the index from `searchTexts`, which
// reference_search.py has written.

// Names such as zn_lib::IPv4::set are several words.
lunr.tokenizer.separator = /[^A-Za-z0-9_]+/;

// Returns an index of entries, which have a title, the title of their page, and a text.
function buildIndex(entries) {
  return lunr(function () {
    this.ref("number");
    this.field("title", {boost: 10});
    this.field("page", {boost: 5});
    this.field("text");
    entries.forEach(function (entry, number) {
      // "pad" finds rightPad.
      var humps = entry.title.replace(/([a-z])([A-Z])/g, "$1 $2");
      this.add({number: number, title: entry.title + " " + humps, page: entry.page, text: entry.text});
    }, this);
  });
}

// Returns the stems of the words that count.
function stemsOf(query) {
  var pipeline = new lunr.Pipeline();
  pipeline.add(lunr.stopWordFilter, lunr.stemmer);
  return pipeline.run(lunr.tokenizer(query)).map(String);
}

// Returns the entries that contain a word with each of the stems, the best first.
function search(index, entries, stems) {
  if (stems.length === 0) return [];
  var results = index.query(function (query) {
    stems.forEach(function (stem) {
      query.term(stem, {boost: 10, usePipeline: false});
      query.term(stem, {
        presence: lunr.Query.presence.REQUIRED,
        usePipeline: false,
        wildcard: lunr.Query.wildcard.TRAILING
      });
    });
  });
  return results.map(function (result) { return entries[result.ref]; });
}

// Returns a paragraph with the words around the first stem in the text, which are marked.
function excerpt(text, stems) {
  var paragraph = document.createElement("p");
  var words = new RegExp("\\b(" + stems.join("|") + ")\\w*", "gi");
  var start = Math.max(0, text.search(words) - 80);
  if (start > 0) start = text.indexOf(" ", start) + 1;
  var part = text.substr(start, 240);
  if (start + 240 < text.length) part = part.substr(0, part.lastIndexOf(" ")) + " ...";
  if (start > 0) part = "... " + part;
  var end = 0;
  part.replace(words, function (word, stem, position) {
    paragraph.append(part.substring(end, position));
    paragraph.appendChild(document.createElement("mark")).textContent = word;
    end = position + word.length;
  });
  paragraph.append(part.substring(end));
  return paragraph;
}

function showResults(index, entries, query) {
  var most = 50;
  var stems = stemsOf(query);
  var results = search(index, entries, stems);
  var count = results.length === 1 ? "1 result" : results.length + " results";
  if (results.length > most) count += ", the best " + most + " of which are shown";
  document.getElementById("search-count").textContent = query.trim() === "" ? "Enter a word above." : count;
  var list = document.getElementById("search-results");
  list.textContent = "";
  results.slice(0, most).forEach(function (entry) {
    var item = list.appendChild(document.createElement("li"));
    var link = item.appendChild(document.createElement("a"));
    link.href = entry.url;
    link.textContent = entry.title;
    if (entry.page !== entry.title) item.append(" in " + entry.page);
    item.appendChild(excerpt(entry.text, stems));
  });
}

if (typeof document !== "undefined") {
  document.addEventListener("DOMContentLoaded", function () {
    var index = buildIndex(searchTexts);
    var field = document.querySelector("#search-form input");
    field.value = new URLSearchParams(location.search).get("query") || "";
    field.addEventListener("input", function () { showResults(index, searchTexts, field.value); });
    field.focus();
    showResults(index, searchTexts, field.value);
  });
}
