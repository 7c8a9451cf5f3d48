'use strict';
// Starts the page and tells the native side that it is ready to be shown.

Tunelark.bindKeyboard = function (playList, controls) {
  const state = Tunelark.state;
  const actions = {
    ' ': () => controls.togglePlay(),
    ArrowLeft: () => Tunelark.post('nativePlayPrev', ''),
    ArrowRight: () => Tunelark.post('nativePlayNext', ''),
    ArrowUp: () => playList.select(state.selected < 0 ? 0 : state.selected - 1, true),
    ArrowDown: () => playList.select(state.selected + 1, true),
    Home: () => playList.select(0, true),
    End: () => playList.select(state.items.length - 1, true),
    Enter: () => playList.play(state.selected),
    Delete: () => playList.remove(state.selected),
  };
  // Alt with an arrow moves the selected track one place.
  const moves = { ArrowUp: -1, ArrowDown: 1 };
  document.addEventListener('keydown', (e) => {
    if (e.defaultPrevented || e.ctrlKey || e.metaKey || document.querySelector('dialog[open]')) return;
    if (Tunelark.keyBelongsToControl(e.target, e.key)) return;
    if (e.altKey) {
      const from = state.selected;
      if (!(e.key in moves) || from < 0) return;
      e.preventDefault();
      playList.move(from, from + moves[e.key]);
      playList.reveal(state.selected);
      return;
    }
    const action = actions[e.key];
    if (!action) return;
    e.preventDefault();
    action();
  });
};

Tunelark.start = function () {
  Tunelark.icons.fill(document);
  const playList = new Tunelark.PlayList();
  const controls = new Tunelark.Controls(playList);
  Tunelark.view = { playList: playList, controls: controls };
  playList.charsetNamesChanged();
  playList.itemsChanged();
  controls.showItemCount();
  controls.showAll();
  Tunelark.bindKeyboard(playList, controls);
};

window.addEventListener('error', (e) => {
  Tunelark.log('page error: ' + e.message + ' (' + e.filename + ':' + e.lineno + ')');
});

// The page draws its own interface: no context menu of the web view.
document.addEventListener('contextmenu', (e) => e.preventDefault());

document.addEventListener('DOMContentLoaded', () => {
  const language = Tunelark.requestedLanguage();
  Tunelark.useLanguage(language).catch((error) => {
    Tunelark.log('the page stays in English: ' + error.message);
  }).finally(() => {
    // Said before the view is built: the window can be mapped while the first layout (and the font
    // lookup it starts) runs here, and what the native side sends in answer arrives after start()
    // anyway. A page that fails to start still lets the window appear.
    Tunelark.post('showWindow', '');
    Tunelark.start();
  });
});
