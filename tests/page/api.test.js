'use strict';
// The page functions the native side calls, evaluated as the program sends them.
const T = TunelarkTest;

T.test('each page function shows its value', async () => {
  const slider = '#position-slider';
  for (const [script, selector, shown] of [['setMode("random");', '#mode-text', 'Random'],
    ['setMode("sequence");', '#mode-text', 'Sequence'], ['setMode("cycle");', '#mode-text', 'Cycle'],
    ['setSpeed("1.50");', '#speed-text', '1.50×'], ['setDuration("62:05");', '#duration-time', '62:05'],
    ['setDuration("-1");', '#duration-time', '--:--'], ['setCurrent("01:23");', '#current-time', '01:23'],
    ['setCurrent("-1");', '#current-time', '--:--'], ['setMainFileName("Harbour");', '#now-title', 'Harbour'],
    ['setMainFileName("");', '#now-title', 'Nothing playing'], ['setIsPlaying(true);', '#play-state', 'Now playing'],
    ['setIsPlaying(false);', '#play-state', 'Not playing'],
    ['setPlayingFilePath("file:///music/a%20b.mp3");', '#now-path', '/music/a b.mp3'],
    ['setIsPlaying(false);', '#play-state', 'Paused'], ['setDuration("03:00");', '#duration-time', '03:00'],
    ['setSliderCurrentValue(2500);', slider, '2500'], ['setSliderCurrentValue(-5);', slider, '0'],
    ['setSliderCurrentValue(20000);', slider, '10000'], ['setSliderCurrentValue("77");', slider, '77']]) {
    await T.native(script);
    T.eq(T.$(selector).value ?? T.text(selector), shown, script);
  }
});

T.test('the calls of a track change, sent again with the same values, change nothing on the page', async () => {
  const mp3s = ['a.mp3', 'b.mp3'].map(T.mp3);
  await T.native(T.playListScript(mp3s, [T.lrc(mp3s[1], 'b.lrc', 'big5')]));
  const change = 'setIsPlaying(true);setPlayingFilePath(' + JSON.stringify(mp3s[1].filePath) + ');' +
    'setMainFileName("b");setDuration("03:00");';
  await T.native(change);
  const changes = [];
  const observer = new MutationObserver((records) => changes.push(...records.map((r) => r.type + ' ' +
    (r.attributeName || r.target.id || r.target.parentNode?.id || r.target.nodeName))));
  observer.observe(document.body, { subtree: true, childList: true, attributes: true, characterData: true });
  await T.native(change);
  await T.native(change);
  await T.sleep(0);
  observer.disconnect();
  T.eq([changes, T.text('#play-state'), T.text('#now-position')], [[], 'Now playing', '2 of 2'], 'no writes');
  // A new time replaces the text instead of editing it in place, which WebKit answers with half a
  // second of redraws at the display's rate.
  const tick = [];
  const ticks = new MutationObserver((records) => tick.push(...records.map((r) => r.type)));
  ticks.observe(T.$('#current-time'), { subtree: true, childList: true, characterData: true });
  await T.native('setCurrent("00:07");');
  await T.sleep(0);
  ticks.disconnect();
  T.eq([tick, T.text('#current-time')], [['childList'], '00:07'], 'a new time');
});

T.test('calls before the list arrives are shown once it does; a broken list is reported and kept', async () => {
  const mp3s = ['a.mp3', 'b.mp3'].map(T.mp3);
  await T.native('setPlayingFilePath(' + JSON.stringify(mp3s[1].filePath) + ');');
  await T.native('setIsPlaying(true);');
  await T.native(T.playListScript(mp3s, [T.lrc(mp3s[1], 'b.lrc', 'big5')]));
  await T.native('setAllSupportedCharsetNames(' + JSON.stringify(JSON.stringify(T.charsetNames)) + ');');
  T.eq([T.rows().map((r) => r.classList.contains('playing')), T.cell(1, '.row-play').getAttribute('aria-label'),
    T.cell(1, 'select').value], [[false, true], 'Pause b', 'big5'], 'playing mark, row button, encoding');
  await T.take();
  await T.native('setPlayList("[{broken","[]");');
  const posts = await T.take();
  T.eq(posts.map((p) => p[0]), ['nativeLog', 'nativeAlert'], 'reported');
  T.ok(posts[1][1].msg.startsWith('The play list could not be shown: '), 'alert text');
  T.eq(T.rows().length, 2, 'list kept');
  await T.native('setPlayList("[]","[]");');
  T.eq([T.rows().length, T.$('#empty-state').hidden, T.text('#track-count'), T.$('#clear-button').disabled],
    [0, false, 'No tracks', true], 'the empty list form: rows, empty state, count, clear');
  await T.expectPosts(() => T.click('#empty-add-button'), [['nativeToAddMp3', '']]);
});

T.test('hostile file names are shown as text and sent back unchanged', async () => {
  const hostile = ['quote " and \' apostrophe.mp3', '<img src=x id=injected>.mp3', '&amp; &lt;b&gt;.mp3',
    '</script><script>window.injected=1</script>.mp3', 'back\\slash \\" end.mp3', 'line\u2028separator\u2029 🎵.mp3',
    'no extension'];
  const mp3s = hostile.map(T.mp3);
  const lrcs = mp3s.map((m, i) => T.lrc(m, '<b>' + hostile[i] + '.lrc'));
  await T.native(T.playListScript(mp3s, lrcs));
  T.eq(T.names(), hostile.map((n) => n.replace(/\.mp3$/, '')), 'names');
  T.eq(T.rows().map((r) => r.querySelector('.lyric-name').textContent), lrcs.map((l) => l.fileName), 'lyrics');
  const injected = document.querySelectorAll('#injected, #list-rows b, #list-rows script');
  T.eq([injected.length, window.injected], [0, undefined], 'nothing injected');
  await T.expectPosts(() => T.mouse(T.cell(3, '.row-name'), 'dblclick'),
    [['nativePlayItem', { filePath: mp3s[3].filePath }]]);
  await T.native('setMainFileName(' + JSON.stringify(hostile[3]) + ');');
  T.eq([T.$('#now-title').textContent, T.$('#now-title').children.length], [hostile[3], 0], 'title as text');
});

T.test('a reloaded page takes the lyrics switches as told, posts nothing, and the next clicks go on from them', async () => {
  const shown = () => [T.$('#lyrics-toggle').getAttribute('aria-checked'),
    T.$('#rows-one').getAttribute('aria-pressed'), T.$('#rows-two').getAttribute('aria-pressed')];
  await T.expectPosts(() => T.native('setLyricsSwitches("true","towRows");'), []);
  T.eq(shown(), ['true', 'false', 'true'], 'on, two rows');
  await T.expectPosts(() => T.click('#lyrics-toggle'), [
    ['nativeTurnLyricsOn', { needOn: 'false', rowAmoutString: 'towRows' }]]);
  await T.native('setLyricsSwitches("true","sixRows");');
  T.eq(shown(), ['true', 'false', 'true'], 'an unknown rows text keeps the rows');
  await T.native('setLyricsSwitches("false","oneRow");');
  T.eq(shown(), ['false', 'true', 'false'], 'off, one row');
  await T.expectPosts(() => T.click('#rows-one'), [], 'one row was already chosen');
});
