'use strict';
// Each control of the page posts its message with the body the native side reads.
const T = TunelarkTest;

T.test('the page posts showWindow once it has loaded', async () => {
  const posts = await T.take();
  T.eq(posts.filter((p) => p.name === 'showWindow').map((p) => p.body), [''], 'showWindow posts');
});

T.test('the window bar drags on press, releases, and maximises by double-click or button', async () => {
  const bar = T.$('#drag-area');
  const brand = T.$('.brand-name');
  await T.expectPosts(() => T.mouse(brand, 'mousedown'), [{ name: 'startMoveWindow', body: '' }], 'press on the title');
  await T.expectPosts(() => T.mouse(bar, 'mouseup'), [{ name: 'stopMoveWindow', body: '' }], 'release');
  await T.expectPosts(() => T.mouse(bar, 'dblclick'), [{ name: 'nativeChangeMaxMin', body: '' }], 'double-click');
  await T.expectPosts(() => T.click('#maximise-button'), [{ name: 'nativeChangeMaxMin', body: '' }], 'button');
  await T.expectPosts(() => {
    T.mouse(T.$('#add-button'), 'mousedown');
    T.mouse(bar, 'mousedown', { button: 2 });
  }, [], 'a press on a button or with the right button does not drag');
});

T.test('buttons without data post an empty body', async () => {
  Fixtures.load(Fixtures.basic());
  setDuration('03:00');
  const table = [
    ['#add-button', 'nativeToAddMp3'],
    ['#prev-button', 'nativePlayPrev'],
    ['#next-button', 'nativePlayNext'],
    ['#mode-button', 'nativeChangeMode'],
    ['#speed-down', 'nativeSpeedDown'],
    ['#speed-up', 'nativeSpeedUp'],
    ['#prev-lyric', 'nativePlayPrevLyric'],
    ['#next-lyric', 'nativePlayNextLyric'],
  ];
  for (const [selector, name] of table) {
    await T.expectPosts(() => T.click(selector), [{ name: name, body: '' }], selector);
  }
});

T.test('the empty list offers its own add button', async () => {
  await T.expectPosts(() => T.click('#empty-add-button'), [{ name: 'nativeToAddMp3', body: '' }]);
});

T.test('clear asks in the page and posts only when confirmed', async () => {
  window.confirm = () => { throw new Error('window.confirm must not be used'); };
  Fixtures.load(Fixtures.basic());
  const dialog = T.$('#clear-dialog');
  await T.expectPosts(async () => {
    T.click('#clear-button');
    T.ok(dialog.open, 'the dialog opens');
    T.ok(T.text('#clear-text').startsWith('All 3 tracks'), 'the dialog names the count');
    T.click('#clear-cancel');
  }, [], 'cancel');
  T.ok(!dialog.open, 'cancel closes the dialog');
  await T.expectPosts(() => {
    T.click('#clear-button');
    T.click('#clear-confirm');
  }, [{ name: 'nativeClearPlayList', body: '' }], 'confirm');
  T.ok(!dialog.open, 'confirm closes the dialog');
});

T.test('clear is disabled while the list is empty', async () => {
  T.ok(T.$('#clear-button').disabled, 'disabled on an empty list');
  Fixtures.load(Fixtures.basic());
  T.ok(!T.$('#clear-button').disabled, 'enabled with tracks');
});

T.test('the play button plays or pauses as setIsPlaying says', async () => {
  const button = T.$('#play-button');
  await T.expectPosts(() => T.click(button), [{ name: 'nativePlay', body: '' }], 'stopped');
  setIsPlaying(true);
  T.eq(button.getAttribute('aria-label'), 'Pause', 'label while playing');
  await T.expectPosts(() => T.click(button), [{ name: 'nativePause', body: '' }], 'playing');
  setIsPlaying(false);
  T.eq(button.getAttribute('aria-label'), 'Play', 'label when paused');
  await T.expectPosts(() => T.click(button), [{ name: 'nativePlay', body: '' }], 'paused');
});

T.test('the slider seeks on release and the clock does not move it while held', async () => {
  setDuration('04:00');
  setSliderCurrentValue(100);
  const slider = T.$('#position-slider');
  T.hittable(slider);
  await T.expectPosts(() => {
    slider.dispatchEvent(new PointerEvent('pointerdown', { bubbles: true }));
    slider.value = '2500';
    slider.dispatchEvent(new Event('input', { bubbles: true }));
    setSliderCurrentValue(200);
    setCurrent('00:05');
    T.eq(slider.value, '2500', 'slider while held');
    T.eq(T.text('#current-time'), '01:00', 'time shown while held');
    slider.dispatchEvent(new Event('change', { bubbles: true }));
  }, [{ name: 'nativeSetCurrentPercent', body: { currentPercent: '2500' } }]);
  setSliderCurrentValue(2600);
  T.eq(slider.value, '2600', 'the clock moves it again after release');
});

T.test('a press on the slider released without a move gives it back to the clock', async () => {
  setDuration('04:00');
  const slider = T.$('#position-slider');
  slider.dispatchEvent(new PointerEvent('pointerdown', { bubbles: true }));
  setSliderCurrentValue(700);
  T.eq(slider.value, '0', 'held');
  window.dispatchEvent(new PointerEvent('pointerup', { bubbles: true }));
  await T.sleep(20);
  T.eq(slider.value, '700', 'released');
});

T.test('the slider is disabled while no track is loaded', async () => {
  T.ok(T.$('#position-slider').disabled, 'disabled at start');
  setDuration('00:30');
  T.ok(!T.$('#position-slider').disabled, 'enabled with a duration');
  setDuration('-1');
  T.ok(T.$('#position-slider').disabled, 'disabled after a failed start');
});

T.test('the lyrics window switch and the row buttons send the misspelled keys', async () => {
  const toggle = T.$('#lyrics-toggle');
  await T.expectPosts(() => T.click(toggle),
    [{ name: 'nativeTurnLyricsOn', body: { needOn: 'true', rowAmoutString: 'oneRow' } }], 'on');
  T.eq(toggle.getAttribute('aria-checked'), 'true', 'switch shows on');
  await T.expectPosts(() => T.click('#rows-two'),
    [{ name: 'nativeTurnOneRowOrTow', body: { rowAmoutString: 'towRows' } }], 'two rows');
  await T.expectPosts(() => T.click('#rows-two'), [], 'two rows again');
  await T.expectPosts(() => T.click(toggle),
    [{ name: 'nativeTurnLyricsOn', body: { needOn: 'false', rowAmoutString: 'towRows' } }], 'off');
  await T.expectPosts(() => T.click('#rows-one'),
    [{ name: 'nativeTurnOneRowOrTow', body: { rowAmoutString: 'oneRow' } }], 'one row');
  T.eq(T.$('#rows-one').getAttribute('aria-pressed'), 'true', 'one row pressed');
  T.eq(T.$('#rows-two').getAttribute('aria-pressed'), 'false', 'two rows released');
});

T.test('the about link asks the native side for the user name and shows it', async () => {
  const link = T.$('#about-link');
  T.eq(link.getAttribute('href'), 'native://calcUsername', 'link target');
  T.eq(typeof username, 'string', 'username is a global');
  const page = location.href;
  T.click(link);
  for (let i = 0; i < 100 && T.text('#about-name') !== 'Orvendel'; i++) await T.sleep(20);
  T.eq(username, 'Orvendel', 'username');
  T.eq(T.text('#about-name'), 'Orvendel', 'name in the about dialog');
  T.eq(location.href, page, 'the page stays');
  const posts = await T.take();
  T.ok(posts.some((p) => p.name === 'navigation' && p.body === 'native://calcUsername'), 'the link was followed');
  T.click('#about-close');
  T.ok(!T.$('#about-dialog').open, 'closed');
});

T.test('copy sends the readable location of the current track', async () => {
  const copy = T.$('#copy-button');
  T.ok(copy.disabled, 'nothing to copy at start');
  setPlayingFilePath('file:///music/Blue%20%26%20Gold/a%20b.mp3');
  T.ok(!copy.disabled, 'enabled with a current track');
  await T.expectPosts(() => T.click(copy), [{ name: 'nativeDoCopy', body: { text: '/music/Blue & Gold/a b.mp3' } }]);
});

T.test('the page keeps the context menu of the web view off', async () => {
  const event = new MouseEvent('contextmenu', { bubbles: true, cancelable: true });
  T.$('.row-lyric, .empty').dispatchEvent(event);
  T.ok(event.defaultPrevented, 'context menu prevented');
});

T.test('every object body holds only string values', async () => {
  Fixtures.load(Fixtures.basic());
  setDuration('01:00');
  Fixtures.row(0).querySelector('select').dispatchEvent(new Event('change', { bubbles: true }));
  T.click(Fixtures.row(2).querySelector('.row-remove'));
  T.click('#lyrics-toggle');
  const slider = T.$('#position-slider');
  slider.value = '42';
  slider.dispatchEvent(new Event('change', { bubbles: true }));
  const objects = (await T.take()).filter((p) => p.body !== null && typeof p.body === 'object');
  T.eq(objects.length, 4, 'object bodies posted');
  for (const post of objects) {
    for (const [key, value] of Object.entries(post.body)) T.eq(typeof value, 'string', post.name + '.' + key);
  }
});
