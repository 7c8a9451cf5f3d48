'use strict';
// Each control of the page, by mouse or keyboard, posts its message with the body the native side reads.
const T = TunelarkTest;
const { cell, names } = T;

T.test('the window bar and the buttons without data post an empty body', async () => {
  const bar = T.$('#drag-area');
  await T.expectPosts(() => [[T.$('.brand-name'), 'mousedown'], [bar, 'mouseup'], [bar, 'dblclick'],
    [T.$('#add-button'), 'mousedown'], [bar, 'mousedown', { button: 2 }]].forEach((a) => T.mouse(...a)),
  [['startMoveWindow', ''], ['stopMoveWindow', ''], ['nativeChangeMaxMin', '']], 'window bar');
  T.load();
  setDuration('03:00');
  for (const [selector, name] of [['#maximise-button', 'nativeChangeMaxMin'], ['#add-button', 'nativeToAddMp3'],
    ['#prev-button', 'nativePlayPrev'], ['#next-button', 'nativePlayNext'], ['#mode-button', 'nativeChangeMode'],
    ['#speed-down', 'nativeSpeedDown'], ['#speed-up', 'nativeSpeedUp'], ['#prev-lyric', 'nativePlayPrevLyric'],
    ['#next-lyric', 'nativePlayNextLyric'], ['#play-button', 'nativePlay']]) {
    await T.expectPosts(() => T.click(selector), [[name, '']], selector);
  }
  setIsPlaying(true);
  window.confirm = () => { throw new Error('window.confirm must not be used'); };
  await T.expectPosts(() => {
    T.click('#play-button');
    T.click('#clear-button');
    T.ok(T.text('#clear-text').startsWith('All 3 tracks'), 'the dialog names the count');
    ['#clear-cancel', '#clear-button', '#clear-confirm'].forEach(T.click);
  }, [['nativePause', ''], ['nativeClearPlayList', '']], 'pause; clear asks first');
});

T.test('the slider seeks on release and the clock does not move it while held', async () => {
  const slider = T.$('#position-slider');
  T.ok(slider.disabled, 'disabled without a track');
  setDuration('04:00');
  await T.expectPosts(() => {
    slider.dispatchEvent(new PointerEvent('pointerdown', { bubbles: true }));
    slider.value = '2500';
    slider.dispatchEvent(new Event('input', { bubbles: true }));
    setSliderCurrentValue(200);
    T.eq([slider.value, T.text('#current-time')], ['2500', '01:00'], 'while held');
    T.change(slider, '2500');
  }, [['nativeSetCurrentPercent', { currentPercent: '2500' }]]);
  setSliderCurrentValue(2600);
  T.eq(slider.value, '2600', 'the clock moves it again after release');
  // Laid out, a value that leaves the thumb on its pixel is not written; one that moves it is.
  await T.sleep(50);
  const perPixel = 10000 / (slider.getBoundingClientRect().width - 14);
  setSliderCurrentValue(2600 + Math.floor(perPixel / 3));
  T.eq(slider.value, '2600', 'the same pixel');
  setSliderCurrentValue(2600 + Math.ceil(perPixel * 2));
  T.eq(slider.value, String(2600 + Math.ceil(perPixel * 2)), 'two pixels on');
});

T.test('the lyrics switch and row buttons send the misspelled keys; about and copy', async () => {
  const clicks = ['#lyrics-toggle', '#rows-two', '#rows-two', '#lyrics-toggle', '#rows-one'];
  await T.expectPosts(() => clicks.forEach(T.click), [
    ['nativeTurnLyricsOn', { needOn: 'true', rowAmoutString: 'oneRow' }],
    ['nativeTurnOneRowOrTow', { rowAmoutString: 'towRows' }],
    ['nativeTurnLyricsOn', { needOn: 'false', rowAmoutString: 'towRows' }],
    ['nativeTurnOneRowOrTow', { rowAmoutString: 'oneRow' }]]);
  T.click('#about-link');
  for (let i = 0; i < 100 && T.text('#about-name') !== 'Orvendel'; i++) await T.sleep(20);
  T.eq([T.text('#about-name'), location.href.endsWith('/index.html')], ['Orvendel', true], 'user name, page kept');
  T.eq((await T.take()).filter((p) => p[0] === 'navigation'), [['navigation', 'native://calcUsername']], 'link');
  T.click('#about-close');
  setPlayingFilePath('file:///music/Blue%20%26%20Gold/a%20b.mp3');
  await T.expectPosts(() => T.click('#copy-button'), [['nativeDoCopy', { text: '/music/Blue & Gold/a b.mp3' }]]);
});

T.test('rows show name, folder and the lyric file paired by main path; an encoding choice is posted', async () => {
  const data = T.load();
  T.eq([names(), T.text('#track-count'), cell(0, '.row-folder').textContent, cell(0, '.lyric-name').textContent,
    cell(1, 'select').value, cell(2, '.row-lyric').textContent], [['Morning Light', 'Harbour Song', 'Night Train'],
    '3 tracks', '/music', 'Morning Light.lrc', 'GB18030', 'No lyric file'], 'names, count, folder, lyric, encoding');
  T.eq(Array.from(cell(0, 'select').options).map((o) => o.value), T.charsetNames, 'encodings');
  await T.expectPosts(() => T.change(cell(1, 'select'), 'KOI8_U'),
    [['nativeSetCharset', { mainPathFileName: data.mp3s[1].mainPathFileName, charset: 'KOI8_U' }]]);
});

T.test('rows play, pause, remove and move by mouse', async () => {
  const { mp3s, paths } = T.load();
  setPlayingFilePath(mp3s[2].filePath);
  setIsPlaying(true);
  await T.expectPosts(() => {
    T.mouse(cell(1, '.row-name'), 'dblclick');
    T.mouse(cell(1, 'select'), 'dblclick');
    [cell(0, '.row-play'), cell(2, '.row-play'), cell(0, '.row-remove')].forEach(T.click);
  }, [['nativePlayItem', paths[1]], ['nativePlayItem', paths[0]], ['nativePauseItem', paths[2]],
    ['nativeRemove', paths[0]]]);
  // Drags row `from` onto row `onto` at the height `at` (0 top, 1 bottom).
  const drag = (from, onto, at) => {
    const dataTransfer = new DataTransfer();
    cell(from, '.row-name').dispatchEvent(new DragEvent('dragstart', { bubbles: true, dataTransfer }));
    const r = cell(onto, '.row-name').closest('.row').getBoundingClientRect();
    for (const type of ['dragover', 'drop']) {
      cell(onto, '.row-name').dispatchEvent(new DragEvent(type, { bubbles: true, cancelable: true, dataTransfer,
        clientX: r.left + 80, clientY: r.top + r.height * at }));
    }
  };
  setPlayingFilePath(mp3s[0].filePath);
  await T.expectPosts(() => [[0, 2, 0.75], [1, 1, 0.75], [1, 2, 0.25], [2, 1, 0.25]].forEach((a) => drag(...a)),
    [['nativeMoveItem', { fromIndex: '0', toIndex: '2' }], ['nativeMoveItem', { fromIndex: '2', toIndex: '1' }]]);
  T.eq([names(), T.rows().map((r) => r.classList.contains('playing'))],
    [['Harbour Song', 'Morning Light', 'Night Train'], [false, true, false]], 'order and the playing mark');
});

T.test('keyboard: arrows select, Enter plays, Delete removes, Alt+arrow moves; controls keep their keys', async () => {
  const { paths } = T.load();
  setDuration('02:00');
  document.activeElement.blur();
  const alt = { altKey: true };
  await T.expectPosts(() => [['ArrowDown'], ['ArrowDown'], ['Enter'], ['Delete'], ['ArrowUp', alt], ['ArrowUp', alt],
    [' '], ['ArrowLeft'], ['ArrowRight'], ['Delete', {}, cell(0, 'select')], ['ArrowLeft', {}, T.$('#position-slider')],
    [' ', {}, T.$('#next-button')]].forEach((a) => T.key(...a)), [['nativePlayItem', paths[1]],
  ['nativeRemove', paths[1]], ['nativeMoveItem', { fromIndex: '1', toIndex: '0' }], ['nativePlay', ''],
  ['nativePlayPrev', ''], ['nativePlayNext', '']]);
  T.eq(T.rows().map((r) => r.classList.contains('selected')), [true, false, false], 'selection follows the row');
});
