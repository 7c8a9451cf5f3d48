'use strict';
// Everything on the page besides the list: window bar, transport, position, now playing, lyrics
// window switches and the dialogs.
Tunelark.Controls = class {
  constructor(playList) {
    this.state = Tunelark.state;
    this.playList = playList;
    playList.onChange = () => this.showNowDetails();
    const byId = (id) => document.getElementById(id);
    this.el = {
      dragArea: byId('drag-area'), clear: byId('clear-button'), about: byId('about-link'),
      play: byId('play-button'), playIcon: byId('play-icon'), slider: byId('position-slider'),
      mode: byId('mode-button'), modeIcon: byId('mode-icon'), modeText: byId('mode-text'),
      speedText: byId('speed-text'), nowTitle: byId('now-title'), nowPath: byId('now-path'),
      nowLyrics: byId('now-lyrics'), nowPosition: byId('now-position'),
      playState: byId('play-state'), copy: byId('copy-button'), lyricsToggle: byId('lyrics-toggle'),
      rowsOne: byId('rows-one'), rowsTwo: byId('rows-two'), clearDialog: byId('clear-dialog'),
      clearText: byId('clear-text'), aboutDialog: byId('about-dialog'), aboutName: byId('about-name'),
    };
    // The two times. A write replaces the element's text: changing a text node's data in place kept
    // WebKit redrawing at the display's rate for half a second after every change.
    this.currentEl = byId('current-time');
    this.durationEl = byId('duration-time');
    this.shownCurrent = this.currentEl.textContent;
    this.shownSlider = this.el.slider.valueAsNumber;
    this.seeking = false;
    this.icons = { play: Tunelark.icons.svg('play'), pause: Tunelark.icons.svg('pause') };
    this.bindWindowBar();
    this.bindTransport();
    this.bindSlider();
    this.bindSide();
    this.bindDialogs();
  }

  showAll() {
    this.showCurrent();
    this.showSlider();
    this.showDuration();
    this.showPlaying();
    this.showMainFileName();
    this.showPlayingPath();
    this.showMode();
    this.showSpeed();
    this.showLyricsSwitches();
  }

  showCurrent() {
    if (this.seeking) return;
    const text = Tunelark.timeText(this.state.current);
    if (text === this.shownCurrent) return;
    this.currentEl.textContent = text;
    this.shownCurrent = text;
  }

  // The thumb moves by whole pixels: a value that would leave it on the same pixel is not written, as
  // the repaint would show nothing new (over a song of a few minutes the thumb moves a pixel every few
  // ticks). Until the slider has been laid out every value is written.
  showSlider() {
    if (this.seeking || this.state.slider === this.shownSlider) return;
    const pixel = (value) => Math.round(value * this.sliderTravel / 10000);
    if (this.sliderTravel > 0 && pixel(this.state.slider) === pixel(this.shownSlider)) return;
    this.el.slider.value = this.state.slider;
    this.shownSlider = this.state.slider;
  }

  showDuration() {
    const text = Tunelark.timeText(this.state.duration);
    Tunelark.setText(this.durationEl, text);
    this.el.slider.disabled = text === '--:--';
    this.describeSlider();
  }

  // What a screen reader says for the slider. Not on the clock's tick, which must stay cheap: when the
  // slider takes focus, when the user moves it, and when the track changes.
  describeSlider() {
    const duration = this.durationEl.textContent;
    const text = duration === '--:--' ? Tunelark.t('No track') : Tunelark.tc('time', '{0} of {1}', this.currentEl.textContent, duration);
    Tunelark.setAttr(this.el.slider, 'aria-valuetext', text);
  }

  showPlaying() {
    const { isPlaying, playingPath } = this.state;
    document.body.classList.toggle('is-playing', isPlaying);
    if (this.shownIcon !== isPlaying) {
      this.el.playIcon.innerHTML = isPlaying ? this.icons.pause : this.icons.play;
      this.shownIcon = isPlaying;
    }
    Tunelark.setAttr(this.el.play, 'aria-label', Tunelark.t(isPlaying ? 'Pause' : 'Play'));
    Tunelark.setText(this.el.playState, Tunelark.t(isPlaying ? 'Now playing' : playingPath ? 'Paused' : 'Not playing'));
    this.playList.patchRow(this.state.playingIndex);
  }

  showMainFileName() {
    const name = this.state.mainFileName;
    Tunelark.setText(this.el.nowTitle, name || Tunelark.t('Nothing playing'));
    this.el.nowTitle.classList.toggle('idle', !name);
  }

  showPlayingPath() {
    const path = Tunelark.readablePath(this.state.playingPath);
    Tunelark.setText(this.el.nowPath, path);
    if (this.el.nowPath.title !== path) this.el.nowPath.title = path;
    this.el.copy.disabled = !path;
    this.showPlaying();
    this.showNowDetails();
  }

  // The lyric file of the current track with its encoding, and the track's place in the list.
  showNowDetails() {
    const { items, playingIndex, lyricsByMain } = this.state;
    const item = items[playingIndex];
    const lyric = item && lyricsByMain.get(item.mainPathFileName);
    Tunelark.setText(this.el.nowLyrics, lyric ? lyric.fileName + ' · ' + lyric.charset : Tunelark.t('None'));
    Tunelark.setText(this.el.nowPosition, item
      ? Tunelark.t('{0} of {1}', Tunelark.count(playingIndex + 1), Tunelark.count(items.length))
      : Tunelark.t('None'));
  }

  showMode() {
    const modes = {
      cycle: ['Cycle', 'cycle', 'repeats the whole list'],
      random: ['Random', 'random', 'picks any track'],
      sequence: ['Sequence', 'sequence', 'stops after the last track'],
    };
    const mode = this.state.mode;
    const t = Tunelark.t;
    const [english, icon, meaning] = modes[mode] || [mode, 'cycle', ''];
    const label = t(english);
    this.el.modeText.textContent = label;
    this.el.modeIcon.innerHTML = Tunelark.icons.svg(icon);
    this.el.mode.setAttribute('aria-label', t('Play mode: {0}. Change the play mode', t(mode)));
    this.el.mode.title = meaning ? t('{0}: {1}', label, t(meaning)) : label;
  }

  showSpeed() {
    this.el.speedText.textContent = this.state.speed + '×';
  }

  showLyricsSwitches() {
    const { lyricsOn, rows } = this.state;
    this.el.lyricsToggle.setAttribute('aria-checked', String(lyricsOn));
    this.el.rowsOne.setAttribute('aria-pressed', String(rows === 'oneRow'));
    this.el.rowsTwo.setAttribute('aria-pressed', String(rows === 'towRows'));
  }

  showItemCount() {
    const count = this.state.items.length;
    this.el.clear.disabled = count === 0;
    this.el.clearText.textContent = count === 1
      ? Tunelark.t('The track and their lyric files are taken off the list. The files stay on disk.')
      : Tunelark.t('All {0} tracks and their lyric files are taken off the list. The files stay on disk.',
        Tunelark.count(count));
  }

  bindWindowBar() {
    const bar = this.el.dragArea;
    const onControl = (e) => e.target.closest('button, a, select, input');
    bar.addEventListener('mousedown', (e) => {
      if (e.button === 0 && !onControl(e)) Tunelark.post('startMoveWindow', '');
    });
    bar.addEventListener('mouseup', (e) => {
      if (e.button === 0 && !onControl(e)) Tunelark.post('stopMoveWindow', '');
    });
    bar.addEventListener('dblclick', (e) => {
      if (!onControl(e)) Tunelark.post('nativeChangeMaxMin', '');
    });
    const click = (id, action) => document.getElementById(id).addEventListener('click', action);
    click('maximise-button', () => Tunelark.post('nativeChangeMaxMin', ''));
    click('add-button', () => Tunelark.post('nativeToAddMp3', ''));
    click('empty-add-button', () => Tunelark.post('nativeToAddMp3', ''));
    click('clear-button', () => this.el.clearDialog.showModal());
    this.el.about.addEventListener('click', () => this.openAbout());
  }

  togglePlay() {
    Tunelark.post(this.state.isPlaying ? 'nativePause' : 'nativePlay', '');
  }

  bindTransport() {
    const click = (id, action) => document.getElementById(id).addEventListener('click', action);
    click('play-button', () => this.togglePlay());
    click('prev-button', () => Tunelark.post('nativePlayPrev', ''));
    click('next-button', () => Tunelark.post('nativePlayNext', ''));
    click('mode-button', () => Tunelark.post('nativeChangeMode', ''));
    click('speed-down', () => Tunelark.post('nativeSpeedDown', ''));
    click('speed-up', () => Tunelark.post('nativeSpeedUp', ''));
  }

  // While the user holds the slider the clock does not move it; the seek is sent on release.
  bindSlider() {
    const slider = this.el.slider;
    const begin = () => { this.seeking = true; };
    slider.addEventListener('focus', () => this.describeSlider());
    // How far the thumb travels: the slider's width less the thumb's (14 px in player.css).
    this.sliderTravel = 0;
    new ResizeObserver(([entry]) => { this.sliderTravel = Math.max(0, entry.contentRect.width - 14); }).observe(slider);
    slider.addEventListener('pointerdown', begin);
    slider.addEventListener('mousedown', begin);
    slider.addEventListener('input', () => {
      this.seeking = true;
      const total = Tunelark.parseTime(this.state.duration);
      if (Number.isFinite(total)) {
        this.shownCurrent = Tunelark.formatTime(total * slider.valueAsNumber / 10000);
        this.currentEl.textContent = this.shownCurrent;
      }
      this.describeSlider();
    });
    slider.addEventListener('change', () => {
      this.seeking = false;
      this.shownSlider = slider.valueAsNumber;
      Tunelark.post('nativeSetCurrentPercent', { currentPercent: Math.round(slider.valueAsNumber) });
    });
    // A press released without moving fires no change: give the clock the slider back.
    const release = () => setTimeout(() => {
      if (!this.seeking) return;
      this.seeking = false;
      this.showSlider();
      this.showCurrent();
    }, 0);
    window.addEventListener('pointerup', release);
    window.addEventListener('mouseup', release);
  }

  bindSide() {
    const click = (id, action) => document.getElementById(id).addEventListener('click', action);
    click('copy-button', () => {
      if (this.state.playingPath) Tunelark.post('nativeDoCopy', { text: Tunelark.readablePath(this.state.playingPath) });
    });
    click('lyrics-toggle', () => {
      this.state.lyricsOn = !this.state.lyricsOn;
      Tunelark.post('nativeTurnLyricsOn', { needOn: this.state.lyricsOn, rowAmoutString: this.state.rows });
      this.showLyricsSwitches();
    });
    click('rows-one', () => this.setRows('oneRow'));
    click('rows-two', () => this.setRows('towRows'));
    click('prev-lyric', () => Tunelark.post('nativePlayPrevLyric', ''));
    click('next-lyric', () => Tunelark.post('nativePlayNextLyric', ''));
  }

  setRows(rows) {
    if (this.state.rows === rows) return;
    this.state.rows = rows;
    Tunelark.post('nativeTurnOneRowOrTow', { rowAmoutString: rows });
    this.showLyricsSwitches();
  }

  bindDialogs() {
    const click = (id, action) => document.getElementById(id).addEventListener('click', action);
    click('clear-cancel', () => this.el.clearDialog.close());
    click('clear-confirm', () => {
      this.el.clearDialog.close();
      Tunelark.post('nativeClearPlayList', '');
    });
    click('about-close', () => this.el.aboutDialog.close());
  }

  // The link's navigation makes the native side set the global username; the page reads it afterwards.
  openAbout() {
    const name = this.el.aboutName;
    name.textContent = '…';
    if (!this.el.aboutDialog.open) this.el.aboutDialog.showModal();
    let tries = 0;
    const look = () => {
      if (typeof username === 'string' && username !== '') name.textContent = username;
      else if (++tries < 40) setTimeout(look, 50);
      else name.textContent = 'an unknown author';
    };
    setTimeout(look, 0);
  }
};
