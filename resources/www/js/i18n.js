'use strict';
// The page's texts in the user's language. The native side names the language in the page's address
// (index.html?lang=zh_CN), and lang/<name>.json maps each English text to its translation; without a
// language, and for a text the catalogue lacks, the page shows the English text.

Tunelark.catalogue = {};

// The language names the native side sends, and the tag each sets on the page so that fonts follow it.
Tunelark.LANGUAGE_TAGS = { zh_CN: 'zh-Hans', zh_TW: 'zh-Hant', ja: 'ja' };

// The text in the page's language; "{0}", "{1}"... stand for the values after it.
Tunelark.t = function (english, ...values) {
  const own = Object.prototype.hasOwnProperty.call(Tunelark.catalogue, english);
  const text = own ? Tunelark.catalogue[english] : english;
  return values.length ? text.replace(/\{(\d)\}/g, (whole, i) => String(values[Number(i)])) : text;
};

// The same for an English text that reads otherwise in another sense: the catalogue keys it as
// "<context>|<text>" ("time|{0} of {1}", where "{0} of {1}" alone counts tracks).
Tunelark.tc = function (context, english, ...values) {
  const key = context + '|' + english;
  if (!Object.prototype.hasOwnProperty.call(Tunelark.catalogue, key)) return Tunelark.t(english, ...values);
  return Tunelark.catalogue[key].replace(/\{(\d)\}/g, (whole, i) => String(values[Number(i)]));
};

Tunelark.requestedLanguage = function () {
  const name = new URLSearchParams(window.location.search).get('lang');
  return name && Object.prototype.hasOwnProperty.call(Tunelark.LANGUAGE_TAGS, name) ? name : 'en';
};

// The texts written in the page itself: text nodes, and the titles and names that tooltips and screen
// readers give.
Tunelark.translateDocument = function (root) {
  const walker = document.createTreeWalker(root, NodeFilter.SHOW_TEXT);
  for (let node = walker.nextNode(); node; node = walker.nextNode()) {
    const text = node.data.trim();
    if (text) node.data = node.data.replace(text, Tunelark.t(text));
  }
  for (const element of root.querySelectorAll('[title], [aria-label]')) {
    for (const name of ['title', 'aria-label']) {
      const text = element.getAttribute(name);
      if (text) element.setAttribute(name, Tunelark.t(text));
    }
  }
};

// Loads the catalogue of a language and shows the page's texts in it; English needs nothing.
Tunelark.useLanguage = async function (name) {
  if (name === 'en') return;
  const response = await fetch('lang/' + name + '.json');
  // A page read from files (the page tests) gets status 0 for every file; a missing one then fails to parse.
  if (response.status >= 400) throw new Error('no catalogue for ' + name);
  const catalogue = await response.json();
  if (catalogue === null || typeof catalogue !== 'object') throw new Error('the catalogue of ' + name + ' is no map');
  Tunelark.catalogue = catalogue;
  document.documentElement.lang = Tunelark.LANGUAGE_TAGS[name];
  Tunelark.translateDocument(document.body);
  // Texts a started page already showed are made from the state again.
  const view = Tunelark.view;
  if (view) {
    view.playList.itemsChanged();
    view.controls.showItemCount();
    view.controls.showAll();
  }
};
