'use strict';
// Test harness evaluated into the page before each test file. The runner records every message the
// page posts; `take()` fetches those since the previous take, `native(script)` evaluates a script the
// way the program sends its page calls.
var TunelarkTest = (function () {
  const cases = [];
  const handlers = window.webkit.messageHandlers;
  const pageErrors = [];
  window.addEventListener('error', (e) => pageErrors.push(e.message + ' (' + e.filename + ':' + e.lineno + ')'));
  window.addEventListener('unhandledrejection', (e) => pageErrors.push('unhandled rejection: ' + e.reason));

  function report(body) {
    handlers.testReport.postMessage(body);
  }

  // JSON with sorted keys, so that objects compare by content.
  function canon(value) {
    if (Array.isArray(value)) return '[' + value.map(canon).join(',') + ']';
    if (value !== null && typeof value === 'object') {
      return '{' + Object.keys(value).sort().map((k) => JSON.stringify(k) + ':' + canon(value[k])).join(',') + '}';
    }
    return JSON.stringify(value);
  }

  function fail(message) {
    throw new Error(message);
  }

  const T = {
    test(name, fn) {
      cases.push({ name: name, fn: fn });
    },

    list() {
      report({ type: 'list', cases: cases.map((c) => c.name) });
    },

    async run(name) {
      const found = cases.find((c) => c.name === name);
      try {
        if (!found) fail('no case named ' + name);
        await found.fn();
        await T.frames(1);
        if (pageErrors.length) fail('page error: ' + pageErrors.join('; '));
        report({ type: 'result', name: name, ok: true });
      } catch (error) {
        const where = error && error.stack ? '\n    at ' + error.stack.split('\n').slice(0, 4).join('\n    at ') : '';
        report({ type: 'result', name: name, ok: false, message: String(error && error.message || error) + where });
      }
    },

    log(text) {
      report({ type: 'log', text: String(text) });
    },

    // Posts since the previous take: [{name, body, json}], json being the body as the native side saw it.
    take() {
      return handlers.testTake.postMessage('');
    },

    async native(script) {
      const error = await handlers.testNative.postMessage(script);
      if (error) fail('native script failed: ' + error + '\n' + script.slice(0, 200));
    },

    frames(count) {
      return new Promise((resolve) => {
        const step = (left) => (left <= 0 ? resolve() : requestAnimationFrame(() => step(left - 1)));
        step(count);
      });
    },

    sleep(ms) {
      return new Promise((resolve) => setTimeout(resolve, ms));
    },

    eq(actual, expected, what) {
      if (canon(actual) !== canon(expected)) {
        fail((what || 'value') + ': expected ' + canon(expected) + ', got ' + canon(actual));
      }
    },

    ok(condition, what) {
      if (!condition) fail(what || 'condition failed');
    },

    $(selector) {
      const el = document.querySelector(selector);
      if (!el) fail('no element ' + selector);
      return el;
    },

    text(selector) {
      return T.$(selector).textContent.trim();
    },

    // The element must be what the user would hit at its centre, and visible.
    hittable(el) {
      const rect = el.getBoundingClientRect();
      if (rect.width === 0 || rect.height === 0) fail('not visible: ' + describe(el));
      const hit = document.elementFromPoint(rect.left + rect.width / 2, rect.top + rect.height / 2);
      if (!hit || !(el === hit || el.contains(hit))) fail(describe(el) + ' is covered by ' + describe(hit));
      return rect;
    },

    click(target) {
      const el = typeof target === 'string' ? T.$(target) : target;
      T.hittable(el);
      el.click();
    },

    mouse(el, type, options) {
      const rect = el.getBoundingClientRect();
      const init = Object.assign({ bubbles: true, cancelable: true, button: 0, detail: type === 'dblclick' ? 2 : 1,
        clientX: rect.left + rect.width / 2, clientY: rect.top + rect.height / 2 }, options || {});
      return el.dispatchEvent(new MouseEvent(type, init));
    },

    key(key, options, target) {
      const el = target || document.activeElement || document.body;
      return el.dispatchEvent(new KeyboardEvent('keydown',
        Object.assign({ key: key, bubbles: true, cancelable: true }, options || {})));
    },

    // Runs action and checks that exactly these messages were posted, in this order.
    async expectPosts(action, expected, what) {
      await T.take();
      await action();
      const posts = (await T.take()).map((p) => ({ name: p.name, body: p.body }));
      T.eq(posts, expected, what || 'posts');
    },
  };

  function describe(el) {
    if (!el) return 'nothing';
    return el.tagName.toLowerCase() + (el.id ? '#' + el.id : '') + (el.className && typeof el.className === 'string' ? '.' + el.className.split(' ').join('.') : '');
  }

  return T;
})();

// Test data builders shared by the test files.
var Fixtures = {
  charsetNames: ['utf8', 'utf16', 'utf32', 'utf16BigEndian', 'utf32BigEndian', 'utf16LittleEndian',
    'utf32LittleEndian', 'GB2312', 'GBK', 'GB18030', 'EUC_CN', 'ISO_2022_CN', 'big5', 'big5_E',
    'big5_HKSCS_1999', 'EUC_JP', 'ISO_2022_JP', 'EUC_KR', 'ISO_2022_KR', 'EUC_TW', 'iso_8859_1', 'iso_8859_2',
    'iso_8859_3', 'iso_8859_4', 'iso_8859_5', 'iso_8859_6', 'iso_8859_7', 'iso_8859_8', 'iso_8859_9',
    'iso_8859_10', 'iso_8859_11', 'iso_8859_13', 'iso_8859_14', 'iso_8859_15', 'iso_8859_16', 'Arabic', 'Greek',
    'Hebrew', 'Latin2', 'Latin5', 'Cyrillic', 'BalticRim', 'Vietnamese', 'KoreanJohab', 'KOI8_R', 'KOI8_U'],

  // An audio record as the native side encodes it, for a file name in /music.
  mp3(fileName, no, folder) {
    const base = 'file://' + (folder || '/music') + '/' + encodeURIComponent(fileName);
    return { fileName: fileName, filePath: base, no: no, duration: '', mainPathFileName: base.replace(/\.[^./]*$/, '') };
  },

  lrc(mp3, fileName, charset) {
    return { fileName: fileName, filePath: mp3.mainPathFileName + '.lrc', charset: charset || 'utf8',
      mainPathFileName: mp3.mainPathFileName };
  },

  // The script the program evaluates for a play list: each JSON text inside a double-quoted string.
  playListScript(mp3s, lrcs) {
    const quote = (value) => JSON.stringify(JSON.stringify(value));
    return 'setPlayList(' + quote(mp3s) + ',' + quote(lrcs) + ');';
  },

  charsetScript() {
    return 'setAllSupportedCharsetNames(' + JSON.stringify(JSON.stringify(Fixtures.charsetNames)) + ');';
  },

  // Three tracks; the first two have lyric files.
  basic() {
    const a = Fixtures.mp3('Morning Light.mp3', 1);
    const b = Fixtures.mp3('Harbour Song.mp3', 2);
    const c = Fixtures.mp3('Night Train.mp3', 3);
    return { mp3s: [a, b, c], lrcs: [Fixtures.lrc(a, 'Morning Light.lrc'), Fixtures.lrc(b, 'Harbour Song.lrc', 'GB18030')] };
  },

  load(data) {
    setAllSupportedCharsetNames(JSON.stringify(Fixtures.charsetNames));
    setPlayList(JSON.stringify(data.mp3s), JSON.stringify(data.lrcs));
  },

  rows() {
    return Array.from(document.querySelectorAll('#list-rows .row'));
  },

  row(index) {
    const row = document.getElementById('row-' + index);
    if (!row) throw new Error('row ' + index + ' is not rendered');
    return row;
  },
};
