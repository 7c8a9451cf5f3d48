'use strict';
// The page in each language the native side may name: every text a person reads, and every name a
// screen reader gives, comes from the catalogue, in every state the native side can put the page in.
const T = TunelarkTest;

const LANGUAGES = ['zh_CN', 'zh_TW', 'ja'];
// Left as written in every language: the program's name, file formats, and the test's files and encodings.
const KEPT = /Tunelark|MP3|LRC|Morning Light|Harbour Song|Night Train|file:\/\/\/music|\/music|utf8|GB18030|big5|KOI8_U/gi;

const catalogue = (name) => fetch('lang/' + name + '.json').then((response) => response.json());

// The texts of the page still in English, each with where it was found.
function englishLeft() {
  const left = [];
  const note = (text, where) => {
    if (/[A-Za-z]{2,}/.test(text.replace(KEPT, ''))) left.push(where + ': ' + JSON.stringify(text.trim()));
  };
  const walker = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
  for (let node = walker.nextNode(); node; node = walker.nextNode()) {
    if (node.parentElement.closest('select')) continue;  // encoding names
    note(node.data, node.parentElement.id || node.parentElement.className);
  }
  for (const element of document.body.querySelectorAll('[title], [aria-label]')) {
    for (const name of ['title', 'aria-label']) {
      if (element.hasAttribute(name)) note(element.getAttribute(name), (element.id || element.className) + '@' + name);
    }
  }
  return left;
}

// Every state whose texts differ: empty, stopped, playing, paused; each play mode; the lyrics window on.
async function visitStates(check) {
  check('empty list');
  const { mp3s } = T.load();
  setPlayingFilePath(mp3s[1].filePath);
  setMainFileName('Harbour Song');
  for (const mode of ['cycle', 'random', 'sequence']) {
    setMode(mode);
    setIsPlaying(true);
    setLyricsSwitches(true, 'towRows');
    check('playing in mode ' + mode);
  }
  setIsPlaying(false);
  setLyricsSwitches(false, 'oneRow');
  check('paused');
  setPlayList(JSON.stringify([mp3s[1]]), '[]');
  check('one track, playing');
}

T.test('the catalogues hold the same texts, each translated', async () => {
  const keys = (map) => Object.keys(map).sort();
  const first = await catalogue(LANGUAGES[0]);
  for (const name of LANGUAGES) {
    const map = await catalogue(name);
    T.eq(keys(map), keys(first), name + ' texts');
    for (const [english, text] of Object.entries(map)) {
      T.ok(typeof text === 'string' && text !== '' && text !== english, name + ' leaves ' + english + ' as it is');
      const holes = (s) => (s.match(/\{\d\}/g) || []).sort().join();
      T.eq(holes(text), holes(english), name + ' places of ' + english);
    }
  }
});

for (const name of LANGUAGES) {
  T.test('in ' + name + ' no English text is left, in any state', async () => {
    await Tunelark.useLanguage(name);
    T.eq(document.documentElement.lang, Tunelark.LANGUAGE_TAGS[name], 'the page language');
    const map = await catalogue(name);
    T.eq(T.text('#add-button'), map['Add files'], 'the add button');
    await visitStates((state) => {
      T.eq(englishLeft(), [], state);
      T.ok(document.querySelector('#mode-icon svg'), state + ': the play mode keeps its icon');
    });
    T.eq(T.text('#now-position'), map['{0} of {1}'].replace('{0}', '1').replace('{1}', '1'), 'place in list');
  });
}

T.test('without a language, or with one it has no catalogue for, the page stays in English', async () => {
  T.eq(Tunelark.requestedLanguage(), 'en', 'the test page names no language');
  await Tunelark.useLanguage('en');
  T.eq([T.text('#add-button'), T.text('#play-state'), document.documentElement.lang], ['Add files', 'Not playing', 'en'],
    'English texts');
  T.load();
  T.eq(T.text('#track-count'), '3 tracks', 'the count');
  let failed = false;
  await Tunelark.useLanguage('xx').catch(() => { failed = true; });
  T.ok(failed && T.text('#add-button') === 'Add files', 'an unknown catalogue changes nothing');
});
