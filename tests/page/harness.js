'use strict';
// Evaluated into the page before each test file; the runner calls run(n) for the n-th case.
var TunelarkTest = (function () {
  const cases = [], errors = [];
  const handlers = window.webkit.messageHandlers;
  let seen = 0;
  window.addEventListener('error', (e) => errors.push(e.message));
  window.addEventListener('unhandledrejection', (e) => errors.push('unhandled rejection: ' + e.reason));
  const canon = (v) => Array.isArray(v) ? '[' + v.map(canon).join(',') + ']' : v !== null && typeof v === 'object'
    ? '{' + Object.keys(v).sort().map((k) => JSON.stringify(k) + ':' + canon(v[k])).join(',') + '}' : JSON.stringify(v);
  const fail = (message) => { throw new Error(message); };
  const T = {
    test: (name, fn) => cases.push({ name, fn }),
    async run(n) {
      const report = (body) => handlers.testReport.postMessage({ name: cases[n]?.name, end: !cases[n], ...body });
      try {
        if (cases[n]) await cases[n].fn();
        await T.sleep(20);
        if (errors.length) fail('page error: ' + errors.join('; '));
        report({ ok: true });
      } catch (e) {
        report({ ok: false, message: e.message + '\n' + e.stack });
      }
    },
    // native(script) evaluates a script as the program sends its page calls; take() gives the posts the
    // native side received since the previous take, as [name, body].
    async native(script) {
      const answer = await handlers.testNative.postMessage(script);
      if (answer.error) fail('native script failed: ' + answer.error + '\n' + script.slice(0, 200));
      return answer.posts;
    },
    take: () => T.native('').then((posts) => posts.slice(seen, seen = posts.length).map((p) => [p.name, p.body])),
    expectPosts: (action, expected, what) => T.take().then(action).then(T.take).then((p) => T.eq(p, expected, what)),
    sleep: (ms) => new Promise((resolve) => setTimeout(resolve, ms)),
    eq: (actual, expected, what) => canon(actual) === canon(expected) ||
      fail((what || 'posts') + ': expected ' + canon(expected) + ', got ' + canon(actual)),
    ok: (condition, what) => condition || fail(what),
    $: (selector) => document.querySelector(selector) || fail('no element ' + selector),
    text: (selector) => T.$(selector).textContent.trim(),
    // Clicks as the user would: the control must be visible and not covered at its centre.
    click(target) {
      const el = typeof target === 'string' ? T.$(target) : target;
      const r = el.getBoundingClientRect();
      const hit = document.elementFromPoint(r.left + r.width / 2, r.top + r.height / 2);
      T.ok(r.width > 0 && hit && el.contains(hit), (el.id || el.className) + ' is hidden or covered');
      el.click();
    },
    mouse: (el, type, options) => el.dispatchEvent(new MouseEvent(type, Object.assign({ bubbles: true,
      cancelable: true, detail: type === 'dblclick' ? 2 : 1 }, options))),
    key: (key, options, target) => (target || document.activeElement || document.body).dispatchEvent(
      new KeyboardEvent('keydown', Object.assign({ key, bubbles: true, cancelable: true }, options))),
    change: (el, value) => (el.value = value, el.dispatchEvent(new Event('change', { bubbles: true }))),
    charsetNames: ['utf8', 'GB18030', 'big5', 'KOI8_U'],
    // An audio record as the native side encodes it, and a lyric record paired with it.
    mp3(fileName) {
      const filePath = 'file:///music/' + encodeURIComponent(fileName);
      return { fileName, filePath, duration: '', mainPathFileName: filePath.replace(/\.[^./]*$/, '') };
    },
    lrc: (mp3, fileName, charset) => ({ fileName, filePath: mp3.mainPathFileName + '.lrc', charset: charset || 'utf8',
      mainPathFileName: mp3.mainPathFileName }),
    // The script the program evaluates: each JSON text inside a double-quoted string.
    playListScript: (mp3s, lrcs) => 'setPlayList(' + [mp3s, lrcs].map((v) => JSON.stringify(JSON.stringify(v))) + ');',
    // Three tracks, shown in the page; the first two have lyric files.
    load() {
      const mp3s = ['Morning Light.mp3', 'Harbour Song.mp3', 'Night Train.mp3'].map(T.mp3);
      setAllSupportedCharsetNames(JSON.stringify(T.charsetNames));
      setPlayList(JSON.stringify(mp3s), JSON.stringify([T.lrc(mp3s[0], 'Morning Light.lrc'),
        T.lrc(mp3s[1], 'Harbour Song.lrc', 'GB18030')]));
      return { mp3s, paths: mp3s.map((m) => ({ filePath: m.filePath })) };
    },
    rows: () => Array.from(document.querySelectorAll('#list-rows .row')),
    cell: (i, selector) => (document.getElementById('row-' + i) || fail('no row ' + i)).querySelector(selector),
    names: () => T.rows().map((r) => r.querySelector('.row-name').textContent),
  };
  return T;
})();
