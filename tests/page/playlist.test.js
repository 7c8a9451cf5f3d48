'use strict';
// The play list: what each row shows, and what the user does to it with the mouse and the keyboard.
const T = TunelarkTest;

function names() {
  return Fixtures.rows().map((row) => row.querySelector('.row-name').textContent);
}

function numbers() {
  return Fixtures.rows().map((row) => row.querySelector('.num').textContent);
}

// Drags row `from` and drops it on the upper or lower half of row `onto`.
function dragRow(from, onto, half) {
  const transfer = new DataTransfer();
  Fixtures.row(from).dispatchEvent(new DragEvent('dragstart', { bubbles: true, dataTransfer: transfer }));
  const rect = Fixtures.row(onto).getBoundingClientRect();
  const y = half === 'upper' ? rect.top + rect.height * 0.25 : rect.top + rect.height * 0.75;
  const target = Fixtures.row(onto);
  for (const type of ['dragover', 'drop']) {
    target.dispatchEvent(new DragEvent(type, { bubbles: true, cancelable: true, clientX: rect.left + 80, clientY: y,
      dataTransfer: transfer }));
  }
}

T.test('rows show number, name, folder, paired lyric file and its encoding', async () => {
  const data = Fixtures.basic();
  Fixtures.load(data);
  T.eq(names(), ['Morning Light', 'Harbour Song', 'Night Train'], 'names');
  T.eq(numbers(), ['1', '2', '3'], 'numbers');
  T.eq(T.text('#track-count'), '3 tracks', 'count');
  T.eq(Fixtures.row(0).querySelector('.row-folder').textContent, '/music', 'folder');
  T.eq(Fixtures.row(0).querySelector('.lyric-name').textContent, 'Morning Light.lrc', 'lyric file');
  const select = Fixtures.row(0).querySelector('select');
  T.eq(Array.from(select.options).map((o) => o.value), Fixtures.charsetNames, 'the 46 names in order');
  T.eq(select.value, 'utf8', 'first encoding');
  T.eq(Fixtures.row(1).querySelector('select').value, 'GB18030', 'second encoding');
  T.eq(Fixtures.row(2).querySelector('select'), null, 'no picker without a lyric file');
  T.eq(Fixtures.row(2).querySelector('.row-lyric').textContent, 'No lyric file', 'no lyric text');
  T.ok(T.$('#empty-state').hidden, 'empty state hidden');
});

T.test('a lyric file pairs only with the track of the same main path', async () => {
  const a = Fixtures.mp3('song.mp3', 1);
  const b = Fixtures.mp3('other.mp3', 2);
  const lrcs = [
    Fixtures.lrc(Fixtures.mp3('song.mp3', 0, '/elsewhere'), 'song.lrc'),
    Fixtures.lrc(Fixtures.mp3('Other.mp3', 0), 'Other.lrc'),
    Fixtures.lrc(a, 'song.LRC', 'big5'),
  ];
  Fixtures.load({ mp3s: [a, b], lrcs: lrcs });
  T.eq(Fixtures.row(0).querySelector('.lyric-name').textContent, 'song.LRC', 'paired by main path');
  T.eq(Fixtures.row(0).querySelector('select').value, 'big5', 'its encoding');
  T.eq(Fixtures.row(1).querySelector('.lyric-name'), null, 'case differs: no pair');
});

T.test('choosing an encoding posts it and the choice stays after a redraw', async () => {
  const data = Fixtures.basic();
  Fixtures.load(data);
  const select = Fixtures.row(1).querySelector('select');
  await T.expectPosts(() => {
    select.value = 'KOI8_U';
    select.dispatchEvent(new Event('change', { bubbles: true }));
  }, [{ name: 'nativeSetCharset', body: { mainPathFileName: data.mp3s[1].mainPathFileName, charset: 'KOI8_U' } }]);
  setAllSupportedCharsetNames(JSON.stringify(Fixtures.charsetNames));
  T.eq(Fixtures.row(1).querySelector('select').value, 'KOI8_U', 'after redraw');
});

T.test('encoding names may come after the list, and an unknown stored name still shows', async () => {
  const a = Fixtures.mp3('a.mp3', 1);
  setPlayList(JSON.stringify([a]), JSON.stringify([Fixtures.lrc(a, 'a.lrc', 'x-unknown')]));
  T.eq(Fixtures.row(0).querySelector('select').value, 'x-unknown', 'before the names');
  setAllSupportedCharsetNames(JSON.stringify(Fixtures.charsetNames));
  const select = Fixtures.row(0).querySelector('select');
  T.eq(select.value, 'x-unknown', 'after the names');
  T.eq(select.options.length, 47, 'the 46 names and the stored one');
});

T.test('double-click plays a row; the row buttons play, pause and remove', async () => {
  const data = Fixtures.basic();
  Fixtures.load(data);
  const path = (i) => data.mp3s[i].filePath;
  await T.expectPosts(() => T.mouse(Fixtures.row(1).querySelector('.row-name'), 'dblclick'),
    [{ name: 'nativePlayItem', body: { filePath: path(1) } }], 'double-click');
  await T.expectPosts(() => {
    T.mouse(Fixtures.row(1).querySelector('select'), 'dblclick');
    T.mouse(Fixtures.row(1).querySelector('.row-remove'), 'dblclick');
  }, [], 'double-click on a control');
  await T.expectPosts(() => T.click(Fixtures.row(2).querySelector('.row-play')),
    [{ name: 'nativePlayItem', body: { filePath: path(2) } }], 'play button');
  setPlayingFilePath(path(2));
  setIsPlaying(true);
  T.eq(Fixtures.row(2).querySelector('.row-play').getAttribute('aria-label'), 'Pause Night Train', 'label');
  await T.expectPosts(() => T.click(Fixtures.row(2).querySelector('.row-play')),
    [{ name: 'nativePauseItem', body: { filePath: path(2) } }], 'pause button');
  await T.expectPosts(() => T.click(Fixtures.row(0).querySelector('.row-remove')),
    [{ name: 'nativeRemove', body: { filePath: path(0) } }], 'remove');
});

T.test('dragging a row moves it here and posts 0-based positions', async () => {
  const data = Fixtures.basic();
  Fixtures.load(data);
  setPlayingFilePath(data.mp3s[0].filePath);
  await T.expectPosts(() => dragRow(0, 2, 'lower'),
    [{ name: 'nativeMoveItem', body: { fromIndex: '0', toIndex: '2' } }], 'down to the end');
  T.eq(names(), ['Harbour Song', 'Night Train', 'Morning Light'], 'order after moving down');
  T.eq(numbers(), ['1', '2', '3'], 'renumbered');
  T.ok(Fixtures.row(2).classList.contains('playing'), 'the playing mark moved with the track');
  T.ok(Fixtures.row(1).querySelector('.lyric-name') === null, 'lyric pairing moved with the track');
  await T.expectPosts(() => dragRow(2, 0, 'upper'),
    [{ name: 'nativeMoveItem', body: { fromIndex: '2', toIndex: '0' } }], 'up to the top');
  T.eq(names(), ['Morning Light', 'Harbour Song', 'Night Train'], 'order after moving up');
  await T.expectPosts(() => {
    dragRow(1, 1, 'lower');
    dragRow(1, 2, 'upper');
  }, [], 'dropping where it was');
  T.ok(T.$('#drop-line').hidden, 'drop line hidden after the drop');
});

T.test('keyboard: arrows select, Enter plays, Delete removes, Alt+arrow moves', async () => {
  const data = Fixtures.basic();
  Fixtures.load(data);
  document.activeElement.blur();
  await T.expectPosts(() => {
    T.key('ArrowDown');
    T.key('ArrowDown');
  }, []);
  T.ok(Fixtures.row(1).classList.contains('selected'), 'second row selected');
  T.eq(document.querySelectorAll('.row.selected').length, 1, 'one selected row');
  await T.expectPosts(() => T.key('Enter'), [{ name: 'nativePlayItem', body: { filePath: data.mp3s[1].filePath } }]);
  await T.expectPosts(() => T.key('Delete'), [{ name: 'nativeRemove', body: { filePath: data.mp3s[1].filePath } }]);
  await T.expectPosts(() => T.key('ArrowUp', { altKey: true }),
    [{ name: 'nativeMoveItem', body: { fromIndex: '1', toIndex: '0' } }], 'Alt+Up');
  T.ok(Fixtures.row(0).classList.contains('selected'), 'selection follows the moved row');
  await T.expectPosts(() => T.key('ArrowUp', { altKey: true }), [], 'Alt+Up at the top');
  await T.expectPosts(() => {
    T.key(' ');
    T.key('ArrowLeft');
    T.key('ArrowRight');
  }, [{ name: 'nativePlay', body: '' }, { name: 'nativePlayPrev', body: '' }, { name: 'nativePlayNext', body: '' }]);
});

T.test('keys aimed at a control stay with it', async () => {
  Fixtures.load(Fixtures.basic());
  setDuration('02:00');
  const select = Fixtures.row(0).querySelector('select');
  await T.expectPosts(() => {
    T.key('Delete', {}, select);
    T.key('Enter', {}, select);
    T.key('ArrowLeft', {}, T.$('#position-slider'));
    T.key(' ', {}, T.$('#next-button'));
  }, []);
});

T.test('the current track is marked and the mark follows setPlayingFilePath', async () => {
  const data = Fixtures.basic();
  Fixtures.load(data);
  setPlayingFilePath(data.mp3s[1].filePath);
  T.eq(Fixtures.rows().map((r) => r.classList.contains('playing')), [false, true, false], 'marked');
  T.eq(Fixtures.row(1).getAttribute('aria-current'), 'true', 'aria-current');
  setPlayingFilePath(data.mp3s[2].filePath);
  T.eq(Fixtures.rows().map((r) => r.classList.contains('playing')), [false, false, true], 'moved');
  T.eq(Fixtures.row(1).getAttribute('aria-current'), null, 'old mark cleared');
  setPlayingFilePath('');
  T.eq(document.querySelectorAll('.row.playing').length, 0, 'cleared');
});

T.test('an empty play list shows the empty state', async () => {
  Fixtures.load(Fixtures.basic());
  await T.native('setPlayList("[]","[]");');
  T.eq(Fixtures.rows().length, 0, 'no rows');
  T.ok(!T.$('#empty-state').hidden, 'empty state shown');
  T.eq(T.text('#track-count'), 'No tracks', 'count');
  T.ok(T.$('#clear-button').disabled, 'nothing to clear');
});

T.test('the side panel names the lyric file, encoding and place of the current track', async () => {
  const data = Fixtures.basic();
  Fixtures.load(data);
  T.eq([T.text('#now-lyrics'), T.text('#now-position')], ['None', 'None'], 'nothing current');
  setPlayingFilePath(data.mp3s[1].filePath);
  T.eq([T.text('#now-lyrics'), T.text('#now-position')], ['Harbour Song.lrc · GB18030', '2 of 3'], 'current');
  const select = Fixtures.row(1).querySelector('select');
  select.value = 'big5';
  select.dispatchEvent(new Event('change', { bubbles: true }));
  T.eq(T.text('#now-lyrics'), 'Harbour Song.lrc · big5', 'after choosing an encoding');
  dragRow(1, 2, 'lower');
  T.eq(T.text('#now-position'), '3 of 3', 'after a move');
});
