'use strict';
// Shared pieces of the page: the state that the native side drives, the bridge to it, and text helpers.
var Tunelark = {};

Tunelark.state = {
  items: [],                // audio records in play-list order
  lyricsByMain: new Map(),  // mainPathFileName -> first lyric record with it
  charsetNames: [],
  mode: 'cycle',
  isPlaying: false,
  playingPath: '',
  playingIndex: -1,
  mainFileName: '',
  duration: '-1',
  current: '-1',
  slider: 0,
  speed: '1.0',
  lyricsOn: false,
  rows: 'oneRow',           // the native side spells the two-row value "towRows"
  selected: -1,
};

// Posts one message to the native side. Every value of an object body is sent as a string.
Tunelark.post = function (name, body) {
  const handlers = window.webkit && window.webkit.messageHandlers;
  const handler = handlers && handlers[name];
  if (!handler) {
    console.warn('no native handler for ' + name);
    return false;
  }
  let payload = body === undefined ? '' : body;
  if (payload !== null && typeof payload === 'object') {
    payload = {};
    for (const key of Object.keys(body)) payload[key] = String(body[key]);
  }
  try {
    handler.postMessage(payload);
    return true;
  } catch (error) {
    console.error('posting ' + name + ' failed: ' + error);
    return false;
  }
};

Tunelark.log = function (text) {
  Tunelark.post('nativeLog', String(text));
};

Tunelark.alert = function (msg) {
  Tunelark.post('nativeAlert', { msg: msg });
};

const HTML_ESCAPES = { '&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;', "'": '&#39;' };

Tunelark.escapeHtml = function (text) {
  return String(text).replace(/[&<>"']/g, (c) => HTML_ESCAPES[c]);
};

// A file name without its last "." and what follows; a name without a dot stays whole.
Tunelark.displayName = function (fileName) {
  const dot = fileName.lastIndexOf('.');
  return dot < 0 ? fileName : fileName.slice(0, dot);
};

// "-1" (or nothing) means no track is loaded.
Tunelark.timeText = function (text) {
  return text === '-1' || text === '' ? '--:--' : text;
};

// "mm:ss" (minutes may have more digits) to seconds; NaN for anything else.
Tunelark.parseTime = function (text) {
  const match = /^(\d+):(\d{2})$/.exec(text);
  return match ? Number(match[1]) * 60 + Number(match[2]) : NaN;
};

Tunelark.formatTime = function (seconds) {
  const whole = Math.max(0, Math.floor(seconds));
  const pad = (n) => (n < 10 ? '0' : '') + n;
  return pad(Math.floor(whole / 60)) + ':' + pad(whole % 60);
};

// A readable local path for a file URL; other texts are returned unchanged.
Tunelark.readablePath = function (url) {
  if (!url.startsWith('file://')) return url;
  try {
    return decodeURIComponent(url.slice('file://'.length));
  } catch (error) {
    return url;
  }
};

// Writes that leave the page as it was are skipped: each one would still mean a style pass, a layout
// and a repaint of the element, and on a track change the same texts come several times.
Tunelark.setText = function (el, text) {
  if (el.textContent !== text) el.textContent = text;
};

Tunelark.setAttr = function (el, name, value) {
  if (el.getAttribute(name) !== value) el.setAttribute(name, value);
};

// Counts as the page writes them; one formatter for all, as each new one loads its locale data again.
Tunelark.count = (function () {
  const format = new Intl.NumberFormat('en-US');
  return (n) => format.format(n);
})();

// True while focus is in a control that uses the given key itself.
Tunelark.keyBelongsToControl = function (target, key) {
  if (!target || !target.tagName) return false;
  const tag = target.tagName;
  if (tag === 'SELECT' || tag === 'TEXTAREA') return true;
  if (tag === 'INPUT') return target.type !== 'range' || key.startsWith('Arrow') || key === 'Home' || key === 'End';
  if (tag === 'BUTTON' || tag === 'A') return key === ' ' || key === 'Enter';
  return false;
};
