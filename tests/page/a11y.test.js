'use strict';
// What a screen reader gets from the page: every control has a role and a name, computed as the
// accessibility layer computes them (aria-labelledby, aria-label, a label, the text inside, title, alt);
// the list is a grid whose rows are named and selected; the slider says its time. And the light palette
// keeps text readable.
const T = TunelarkTest;

const A = (() => {
  const implicitRoles = { BUTTON: 'button', SELECT: 'combobox', TEXTAREA: 'textbox', DIALOG: 'dialog',
    H1: 'heading', H2: 'heading', H3: 'heading', IMG: 'img' };
  const inputRoles = { range: 'slider', checkbox: 'checkbox', radio: 'radio', button: 'button', text: 'textbox' };
  const fromContent = new Set(['button', 'link', 'switch', 'checkbox', 'radio', 'gridcell', 'row', 'option',
    'heading', 'cell', 'columnheader', 'rowheader', 'tab', 'menuitem', 'treeitem', 'tooltip']);
  const controlRoles = new Set(['button', 'link', 'switch', 'checkbox', 'radio', 'slider', 'combobox', 'listbox',
    'textbox', 'grid', 'option', 'tab', 'menuitem', 'spinbutton', 'searchbox']);
  const role = (el) => {
    const explicit = (el.getAttribute('role') || '').trim().split(/\s+/)[0];
    if (explicit) return explicit;
    if (el.tagName === 'A') return el.hasAttribute('href') ? 'link' : '';
    if (el.tagName === 'INPUT') return inputRoles[el.type] || 'textbox';
    return implicitRoles[el.tagName] || '';
  };
  const hidden = (el) => !!el.closest('[hidden], [aria-hidden="true"]') ||
    getComputedStyle(el).display === 'none' || getComputedStyle(el).visibility === 'hidden';
  const clean = (text) => text.replace(/\s+/g, ' ').trim();
  // The text alternative of one node, following the steps of the accessible name computation.
  const name = (el, inside) => {
    if (el.nodeType === Node.TEXT_NODE) return el.data;
    if (el.nodeType !== Node.ELEMENT_NODE || (inside && hidden(el))) return '';
    if (inside && el.matches('input, select, textarea')) return '';  // a control inside a label adds no words
    const labelledBy = inside ? '' : (el.getAttribute('aria-labelledby') || '').trim();
    if (labelledBy) {
      return clean(labelledBy.split(/\s+/).map((id) => document.getElementById(id))
        .map((ref) => (ref ? name(ref, true) : '')).join(' '));
    }
    const label = clean(el.getAttribute('aria-label') || '');
    if (label) return label;
    if (el.tagName === 'IMG' || (el.tagName === 'INPUT' && el.type === 'image')) return clean(el.alt || '');
    if (el.labels && el.labels.length) return clean(Array.from(el.labels).map((l) => name(l, true)).join(' '));
    if (inside || fromContent.has(role(el))) {
      const text = clean(Array.from(el.childNodes).map((child) => name(child, true)).join(' '));
      if (text) return text;
    }
    return inside ? '' : clean(el.title || '');
  };
  const focusable = 'button, a[href], input, select, textarea, [tabindex], [role]';
  // The controls a user can reach now: shown, and of a role that a screen reader offers as a control.
  const controls = (root) => Array.from(root.querySelectorAll(focusable))
    .filter((el) => !hidden(el) && el.getClientRects().length > 0)
    .filter((el) => controlRoles.has(role(el)) || el.tabIndex >= 0);
  // "what: problem" for each control without a role or a name, and each reference that leads nowhere.
  const problems = (root = document) => {
    const found = [];
    const what = (el) => el.id ? '#' + el.id : el.outerHTML.slice(0, 80);
    for (const el of controls(root)) {
      if (!role(el)) found.push(what(el) + ': no role');
      else if (!name(el)) found.push(what(el) + ': no name');
    }
    for (const el of root.querySelectorAll('[aria-labelledby], [aria-describedby], [aria-activedescendant]')) {
      for (const attr of ['aria-labelledby', 'aria-describedby', 'aria-activedescendant']) {
        for (const id of (el.getAttribute(attr) || '').split(/\s+/).filter(Boolean)) {
          if (!document.getElementById(id)) found.push(what(el) + ': ' + attr + ' names no element ' + id);
        }
      }
    }
    for (const el of root.querySelectorAll('[aria-hidden="true"] *')) {
      if (el.matches('button, a[href], input, select') && el.tabIndex >= 0) found.push(what(el) + ': focusable but hidden');
    }
    return found;
  };
  return { role, name, controls, problems };
})();

const noProblems = (when) => T.eq(A.problems(), [], 'controls without role or name ' + when);

T.test('the checker reports a nameless icon button and a reference that leads nowhere', () => {
  const box = document.createElement('div');
  box.innerHTML = '<button id="a1"><svg aria-hidden="true"></svg></button><button id="a2" aria-labelledby="no">z</button>';
  document.body.append(box);
  T.eq(A.problems(box), ['#a1: no name', '#a2: no name', '#a2: aria-labelledby names no element no'], 'reported');
  box.remove();
});

T.test('every control has a role and a name: empty list, full list, playing, and in each dialog', async () => {
  noProblems('with an empty list');
  T.eq(A.name(T.$('#empty-add-button')), 'Add files', 'the empty list\'s add button');
  const { mp3s } = T.load();
  setDuration('03:00');
  setPlayingFilePath(mp3s[1].filePath);
  setIsPlaying(true);
  noProblems('with a list that plays');
  const reached = A.controls(document).map((el) => el.id || el.className);
  for (const id of ['add-button', 'clear-button', 'about-link', 'maximise-button', 'list-viewport', 'copy-button',
    'lyrics-toggle', 'rows-one', 'rows-two', 'prev-lyric', 'next-lyric', 'prev-button', 'play-button', 'next-button',
    'position-slider', 'mode-button', 'speed-down', 'speed-up', 'charset']) {
    T.ok(reached.includes(id), id + ' was not among the controls checked: ' + reached.join(' '));
  }
  T.eq(['#play-button', '#prev-button', '#mode-button', '#speed-up', '#about-link'].map((s) => A.name(T.$(s))),
    ['Pause', 'Previous track', 'Play mode: cycle. Change the play mode', 'Faster', 'About Tunelark'], 'names');
  T.click('#clear-button');
  noProblems('with the clear dialog open');
  T.eq([A.role(T.$('#clear-dialog')), A.name(T.$('#clear-dialog'))], ['dialog', 'Clear the play list?'], 'clear dialog');
  T.click('#clear-cancel');
  T.click('#about-link');
  noProblems('with the about dialog open');
  T.eq(A.name(T.$('#about-dialog')), 'Tunelark', 'about dialog');
  T.click('#about-close');
});

T.test('the play list is a named grid: rows named by track, selected and active, cells with the controls', () => {
  T.load();
  const grid = T.$('#list-viewport');
  T.eq([A.role(grid), A.name(grid), grid.getAttribute('aria-rowcount')], ['grid', 'Play list', '3'], 'grid');
  T.eq(T.rows().map((r) => [A.role(r), A.name(r), r.getAttribute('aria-rowindex')]),
    [['row', 'Morning Light', '1'], ['row', 'Harbour Song', '2'], ['row', 'Night Train', '3']], 'rows');
  for (const row of T.rows()) {
    T.ok(Array.from(row.children).every((cell) => A.role(cell) === 'gridcell'), 'every child of a row is a cell');
  }
  T.eq([A.role(T.cell(0, 'select')), A.name(T.cell(0, 'select')), A.name(T.cell(1, '.row-remove'))],
    ['combobox', 'Encoding of Morning Light.lrc', 'Remove Harbour Song'], 'encoding choice and remove button');
  grid.focus();
  T.key('ArrowDown');
  T.key('ArrowDown');
  T.eq([grid.getAttribute('aria-activedescendant'), T.rows().map((r) => r.getAttribute('aria-selected'))],
    ['row-1', ['false', 'true', 'false']], 'the keyboard\'s selection');
  setPlayList('[]', '[]');
  T.eq([grid.getAttribute('aria-rowcount'), grid.hasAttribute('aria-activedescendant')], ['0', false], 'emptied');
});

T.test('the slider says the time; the lyrics switch is a named switch whose state is not in its name', async () => {
  const slider = T.$('#position-slider');
  T.eq([A.role(slider), A.name(slider), slider.getAttribute('aria-valuetext')], ['slider', 'Position', 'No track'],
    'without a track');
  setDuration('04:00');
  setCurrent('01:00');
  setSliderCurrentValue(2500);
  slider.focus();
  T.eq(slider.getAttribute('aria-valuetext'), '01:00 of 04:00', 'on focus');
  slider.value = '5000';
  slider.dispatchEvent(new Event('input', { bubbles: true }));
  T.eq(slider.getAttribute('aria-valuetext'), '02:00 of 04:00', 'moved by the user');
  T.change(slider, '5000');
  const toggle = T.$('#lyrics-toggle');
  const state = () => [A.role(toggle), A.name(toggle), toggle.getAttribute('aria-checked')];
  T.eq(state(), ['switch', 'Lyrics window', 'false'], 'off');
  T.click(toggle);
  T.eq(state(), ['switch', 'Lyrics window', 'true'], 'on');
  T.eq(['#rows-one', '#rows-two'].map((s) => [A.name(T.$(s)), T.$(s).getAttribute('aria-pressed')]),
    [['One row', 'true'], ['Two rows', 'false']], 'the row choice');
});

// Contrast of each element's own text with what lies behind it, opaque colours composited upwards.
const contrastProblems = () => {
  const rgba = (text) => (text.match(/[\d.]+/g) || [0, 0, 0, 0]).map(Number).concat([1]).slice(0, 4);
  const over = (top, bottom) => [0, 1, 2].map((i) => top[i] * top[3] + bottom[i] * (1 - top[3])).concat([1]);
  const luminance = (c) => c.slice(0, 3).map((v) => v / 255)
    .map((v) => (v <= 0.03928 ? v / 12.92 : ((v + 0.055) / 1.055) ** 2.4))
    .reduce((sum, v, i) => sum + v * [0.2126, 0.7152, 0.0722][i], 0);
  const behind = (el) => {
    const layers = [];
    for (let at = el; at; at = at.parentElement) {
      const style = getComputedStyle(at);
      if (style.backgroundImage !== 'none' && at !== el) return null;  // a picture: not measured here
      const colour = rgba(style.backgroundColor);
      if (colour[3] > 0) layers.push(colour);
      if (colour[3] >= 1) break;
    }
    return layers.reverse().reduce((below, layer) => over(layer, below), [255, 255, 255, 1]);
  };
  const found = [];
  for (const el of document.querySelectorAll('body *')) {
    const own = Array.from(el.childNodes).some((n) => n.nodeType === Node.TEXT_NODE && n.data.trim());
    if (!own || el.getClientRects().length === 0 || el.closest('[hidden], :disabled, .art, .logo')) continue;
    const style = getComputedStyle(el);
    const ground = behind(el);
    if (!ground || style.visibility === 'hidden' || Number(style.opacity) < 1) continue;
    const text = over(rgba(style.color), ground);
    const [a, b] = [luminance(text), luminance(ground)].sort((x, y) => y - x);
    const ratio = (a + 0.05) / (b + 0.05);
    const large = parseFloat(style.fontSize) >= 24 || (parseFloat(style.fontSize) >= 18.66 && style.fontWeight >= 700);
    if (ratio < (large ? 3 : 4.5)) found.push(el.tagName + '.' + el.className + ' "' + el.textContent.trim().slice(0, 20) + '" ' + ratio.toFixed(2));
  }
  return found;
};

T.test('the light palette outweighs the dark one wherever it stands and keeps every text readable', async () => {
  const link = document.createElement('link');
  link.rel = 'stylesheet';
  link.href = 'css/light.css';
  // Before the page's own sheet: its rules must win by weight, not by coming last.
  document.head.insertBefore(link, document.querySelector('link[rel=stylesheet]'));
  await new Promise((resolve, reject) => { link.onload = resolve; link.onerror = () => reject(new Error('no light.css')); });
  const { mp3s } = T.load();
  setDuration('03:00');
  setPlayingFilePath(mp3s[0].filePath);
  T.key('ArrowDown', {}, document.body);
  T.key('ArrowDown', {}, document.body);
  await T.sleep(300);  // the buttons' colour transitions from the dark palette
  T.eq([getComputedStyle(document.body).backgroundColor, getComputedStyle(T.$('.btn-primary')).color,
    getComputedStyle(document.documentElement).colorScheme], ['rgb(244, 245, 248)', 'rgb(255, 255, 255)', 'light'],
  'the light ground, white text on the accent, light form controls');
  T.eq(contrastProblems(), [], 'texts below 4.5:1 (3:1 when large) in the light palette');
  T.click('#clear-button');
  T.eq(contrastProblems(), [], 'texts below 4.5:1 in the clear dialog');
  T.click('#clear-cancel');
});
