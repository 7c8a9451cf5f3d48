'use strict';
// The page functions the native side calls: what each shows, in any order, with hostile names and with
// a long list.
const T = TunelarkTest;

T.test('each page function shows its value', async () => {
  const table = [
    ['setMode("random");', '#mode-text', 'Random'],
    ['setMode("sequence");', '#mode-text', 'Sequence'],
    ['setMode("cycle");', '#mode-text', 'Cycle'],
    ['setMode("other");', '#mode-text', 'other'],
    ['setSpeed("1.50");', '#speed-text', '1.50×'],
    ['setSpeed("0.25");', '#speed-text', '0.25×'],
    ['setDuration("62:05");', '#duration-time', '62:05'],
    ['setDuration("-1");', '#duration-time', '--:--'],
    ['setCurrent("01:23");', '#current-time', '01:23'],
    ['setCurrent("-1");', '#current-time', '--:--'],
    ['setMainFileName("Harbour Song");', '#now-title', 'Harbour Song'],
    ['setMainFileName("");', '#now-title', 'Nothing playing'],
    ['setIsPlaying(true);', '#play-state', 'Now playing'],
    ['setIsPlaying(false);', '#play-state', 'Not playing'],
    ['setPlayingFilePath("file:///music/a%20b.mp3");', '#now-path', '/music/a b.mp3'],
    ['setIsPlaying(false);', '#play-state', 'Paused'],
  ];
  for (const [script, selector, shown] of table) {
    await T.native(script);
    T.eq(T.text(selector), shown, script);
  }
  T.eq(T.$('#mode-button').getAttribute('aria-label'), 'Play mode: other. Change the play mode', 'mode label');
});

T.test('the slider value follows setSliderCurrentValue within 0 to 10000', async () => {
  setDuration('03:00');
  const slider = T.$('#position-slider');
  const table = [[2500, '2500'], [0, '0'], [10000, '10000'], [20000, '10000'], [-5, '0'], ['77', '77']];
  for (const [value, shown] of table) {
    await T.native('setSliderCurrentValue(' + JSON.stringify(value) + ');');
    T.eq(slider.value, shown, 'value ' + value);
  }
});

T.test('the play icon follows setIsPlaying', async () => {
  const icon = () => T.$('#play-icon path').getAttribute('d');
  const stopped = icon();
  await T.native('setIsPlaying(true);');
  T.ok(icon() !== stopped, 'pause icon while playing');
  T.ok(document.body.classList.contains('is-playing'), 'page marked playing');
  await T.native('setIsPlaying(false);');
  T.eq(icon(), stopped, 'play icon when stopped');
});

T.test('calls before the list arrives are shown once it does', async () => {
  const data = Fixtures.basic();
  await T.native('setPlayingFilePath(' + JSON.stringify(data.mp3s[2].filePath) + ');');
  await T.native('setIsPlaying(true);');
  await T.native('setMode("sequence");');
  await T.native(Fixtures.playListScript(data.mp3s, data.lrcs));
  await T.native(Fixtures.charsetScript());
  T.ok(Fixtures.row(2).classList.contains('playing'), 'current track marked');
  T.eq(Fixtures.row(2).querySelector('.row-play').getAttribute('aria-label'), 'Pause Night Train', 'row button');
  T.eq(Fixtures.row(1).querySelector('select').value, 'GB18030', 'encoding');
  T.eq(T.text('#mode-text'), 'Sequence', 'mode');
});

T.test('the order of the calls of one report does not matter', async () => {
  const data = Fixtures.basic();
  const report = [
    'setIsPlaying(true);', 'setPlayingFilePath(' + JSON.stringify(data.mp3s[0].filePath) + ');',
    'setCurrent("00:00");', 'setDuration("03:25");', 'setSliderCurrentValue(0);', 'setMainFileName("Morning Light");',
  ];
  const shown = () => [T.text('#now-title'), T.text('#current-time'), T.text('#duration-time'),
    T.text('#play-state'), Fixtures.rows().map((r) => r.classList.contains('playing')).join()];
  const orders = [report, report.slice().reverse(), [report[3], report[0], report[5], report[1], report[4], report[2]]];
  let first = null;
  for (const order of orders) {
    await T.native('setPlayList("[]","[]");');
    for (const script of order) await T.native(script);
    await T.native(Fixtures.playListScript(data.mp3s, data.lrcs));
    if (first === null) first = shown();
    T.eq(shown(), first, 'order ' + order.join(' '));
  }
  T.eq(first, ['Morning Light', '00:00', '03:25', 'Now playing', 'true,false,false'], 'what is shown');
});

T.test('a new list replaces the old one and keeps the mark on the current path', async () => {
  const data = Fixtures.basic();
  Fixtures.load(data);
  setPlayingFilePath(data.mp3s[1].filePath);
  const moved = [data.mp3s[1], data.mp3s[2]];
  setPlayList(JSON.stringify(moved), JSON.stringify(data.lrcs));
  T.eq(Fixtures.rows().length, 2, 'rows');
  T.ok(Fixtures.row(0).classList.contains('playing'), 'mark on the same path');
  T.eq(T.text('#track-count'), '2 tracks', 'count');
});

T.test('a play list that is not JSON is reported and the list stays', async () => {
  Fixtures.load(Fixtures.basic());
  await T.take();
  await T.native('setPlayList("[{broken","[]");');
  const posts = await T.take();
  T.eq(Fixtures.rows().length, 3, 'list kept');
  const alert = posts.find((p) => p.name === 'nativeAlert');
  T.ok(alert && typeof alert.body.msg === 'string' && alert.body.msg.startsWith('The play list could not be shown'),
    'alert posted: ' + JSON.stringify(posts));
});

T.test('hostile file names are shown as text', async () => {
  const hostile = [
    'quote " and \' apostrophe.mp3',
    '<img src=x id=injected>.mp3',
    '&amp; &lt;b&gt;.mp3',
    '</script><script>window.injected=1</script>.mp3',
    'back\\slash \\" end.mp3',
    'emoji 🎵🐦 and line\u2028separator\u2029.mp3',
    'no extension',
    '.mp3',
  ];
  const mp3s = hostile.map((name, i) => Fixtures.mp3(name, i + 1));
  const lrcs = mp3s.map((m, i) => Fixtures.lrc(m, '<b>' + hostile[i].replace(/\.mp3$/, '.lrc')));
  await T.native(Fixtures.charsetScript());
  await T.native(Fixtures.playListScript(mp3s, lrcs));
  const expected = ['quote " and \' apostrophe', '<img src=x id=injected>', '&amp; &lt;b&gt;',
    '</script><script>window.injected=1</script>', 'back\\slash \\" end', 'emoji 🎵🐦 and line\u2028separator\u2029',
    'no extension', '.mp3'];
  T.eq(Fixtures.rows().map((r) => r.querySelector('.row-name').textContent), expected, 'names');
  T.eq(Fixtures.rows().map((r) => r.querySelector('.lyric-name').textContent), lrcs.map((l) => l.fileName), 'lyrics');
  T.eq(document.getElementById('injected'), null, 'no element injected');
  T.eq(document.querySelectorAll('#list-rows b, #list-rows script').length, 0, 'no markup injected');
  T.eq(window.injected, undefined, 'no script ran');
  await T.expectPosts(() => T.mouse(Fixtures.row(1).querySelector('.row-name'), 'dblclick'),
    [{ name: 'nativePlayItem', body: { filePath: mp3s[1].filePath } }], 'path sent back unchanged');
  await T.native('setMainFileName(' + JSON.stringify(expected[3]) + ');');
  T.eq(T.$('#now-title').textContent, expected[3], 'now playing title');
  T.eq(T.$('#now-title').children.length, 0, 'title holds text only');
});

T.test('clock ticks touch only the time text and the slider value', async () => {
  Fixtures.load(Fixtures.basic());
  setDuration('03:00');
  setCurrent('00:00');
  setSliderCurrentValue(0);
  const timeNode = T.$('#current-time').firstChild;
  const slider = T.$('#position-slider');
  const records = [];
  const observer = new MutationObserver((list) => records.push(...list));
  observer.observe(document.documentElement, { subtree: true, childList: true, attributes: true, characterData: true });
  for (let i = 1; i <= 20; i++) {
    setCurrent(Tunelark.formatTime(i / 10));
    setSliderCurrentValue(i * 5);
  }
  await T.frames(1);
  const changed = records.length;
  setCurrent('00:02');
  setSliderCurrentValue(100);
  await T.frames(1);
  observer.disconnect();
  T.ok(changed > 0, 'the time text changed');
  T.ok(records.every((r) => r.type === 'characterData' && r.target === timeNode),
    'only the time text node: ' + records.map((r) => r.type + ' ' + (r.target.id || r.target.nodeName)).join(', '));
  T.eq(records.length, changed, 'unchanged values touch nothing');
  T.eq(slider.value, '100', 'slider value');
});

T.test('ten thousand tracks render at once and scroll to the end', async () => {
  const count = 10000;
  const mp3s = [];
  const lrcs = [];
  for (let i = 0; i < count; i++) {
    const mp3 = Fixtures.mp3('Track ' + i + ' <' + i + '> & "' + i + '".mp3', i + 1, '/music/album ' + (i % 97));
    mp3s.push(mp3);
    if (i % 2 === 0) lrcs.push(Fixtures.lrc(mp3, 'Track ' + i + '.lrc', Fixtures.charsetNames[i % 46]));
  }
  await T.native(Fixtures.charsetScript());
  await T.native(Fixtures.playListScript(mp3s, lrcs));
  T.eq(T.text('#track-count'), '10,000 tracks', 'count');
  T.ok(Fixtures.rows().length > 5 && Fixtures.rows().length < 80, 'only rows in sight rendered: ' + Fixtures.rows().length);
  await T.native('setPlayingFilePath(' + JSON.stringify(mp3s[count - 1].filePath) + ');');
  document.activeElement.blur();
  T.key('End');
  await T.frames(2);
  const last = Fixtures.row(count - 1);
  T.eq(last.querySelector('.num').textContent, '10000', 'last number');
  T.eq(last.querySelector('.row-name').textContent, 'Track 9999 <9999> & "9999"', 'last name');
  T.ok(last.classList.contains('playing') && last.classList.contains('selected'), 'last row marked');
  T.hittable(last.querySelector('.row-name'));
  T.eq(Fixtures.row(count - 2).querySelector('select').value, Fixtures.charsetNames[(count - 2) % 46], 'encoding');
  await T.expectPosts(() => T.mouse(last.querySelector('.row-name'), 'dblclick'),
    [{ name: 'nativePlayItem', body: { filePath: mp3s[count - 1].filePath } }], 'play the last');
});
