'use strict';
// The functions the native side calls by evaluating short scripts. They arrive in any order, also before
// the page has started: each one stores its value and shows it once the view exists.

// The native side sets this when the page follows the link native://calcUsername.
var username = '';

Tunelark.view = null;  // { playList, controls } once the page has started

Tunelark.syncPlayingIndex = function () {
  const { items, playingPath } = Tunelark.state;
  Tunelark.state.playingIndex = playingPath === '' ? -1 : items.findIndex((item) => item.filePath === playingPath);
};

Tunelark.text = function (value) {
  return value === undefined || value === null ? '' : String(value);
};

Tunelark.audioRecord = function (raw) {
  const text = Tunelark.text;
  const fileName = text(raw.fileName);
  const filePath = text(raw.filePath);
  const path = Tunelark.readablePath(filePath);
  const slash = path.lastIndexOf('/');
  return {
    fileName: fileName,
    filePath: filePath,
    mainPathFileName: text(raw.mainPathFileName),
    name: Tunelark.displayName(fileName) || fileName,
    folder: slash > 0 ? path.slice(0, slash) : '',
  };
};

Tunelark.lyricRecord = function (raw) {
  const text = Tunelark.text;
  return {
    fileName: text(raw.fileName),
    filePath: text(raw.filePath),
    charset: text(raw.charset) || 'utf8',
    mainPathFileName: text(raw.mainPathFileName),
  };
};

// The argument is JSON text; an array already parsed is taken as it is.
Tunelark.parseList = function (value, what) {
  const list = typeof value === 'string' ? JSON.parse(value) : value;
  if (!Array.isArray(list)) throw new Error(what + ' is not a list');
  return list.filter((entry) => entry !== null && typeof entry === 'object');
};

function setPlayList(mp3Json, lrcJson) {
  const state = Tunelark.state;
  let audio;
  let lyrics;
  try {
    audio = Tunelark.parseList(mp3Json, 'the track list');
    lyrics = Tunelark.parseList(lrcJson === undefined ? '[]' : lrcJson, 'the lyric list');
  } catch (error) {
    Tunelark.log('setPlayList: ' + error.message);
    Tunelark.alert(Tunelark.t('The play list could not be shown: {0}', error.message));
    return;
  }
  state.items = audio.map(Tunelark.audioRecord);
  const byMain = new Map();
  for (const raw of lyrics) {
    const record = Tunelark.lyricRecord(raw);
    if (!byMain.has(record.mainPathFileName)) byMain.set(record.mainPathFileName, record);
  }
  state.lyricsByMain = byMain;
  Tunelark.syncPlayingIndex();
  if (!Tunelark.view) return;
  Tunelark.view.playList.itemsChanged();
  Tunelark.view.controls.showItemCount();
  Tunelark.view.controls.showPlaying();
  Tunelark.view.controls.showNowDetails();
}

function setAllSupportedCharsetNames(json) {
  let names;
  try {
    names = typeof json === 'string' ? JSON.parse(json) : json;
    if (!Array.isArray(names)) throw new Error('not a list');
  } catch (error) {
    Tunelark.log('setAllSupportedCharsetNames: ' + error.message);
    return;
  }
  Tunelark.state.charsetNames = names.map(String);
  if (Tunelark.view) Tunelark.view.playList.charsetNamesChanged();
}

function setMode(mode) {
  Tunelark.state.mode = Tunelark.text(mode);
  if (Tunelark.view) Tunelark.view.controls.showMode();
}

function setIsPlaying(playing) {
  Tunelark.state.isPlaying = playing === true || playing === 'true';
  if (Tunelark.view) Tunelark.view.controls.showPlaying();
}

function setPlayingFilePath(filePath) {
  const state = Tunelark.state;
  const previous = state.playingIndex;
  state.playingPath = Tunelark.text(filePath);
  Tunelark.syncPlayingIndex();
  if (!Tunelark.view) return;
  Tunelark.view.playList.patchRow(previous);
  Tunelark.view.controls.showPlayingPath();
}

function setMainFileName(name) {
  Tunelark.state.mainFileName = Tunelark.text(name);
  if (Tunelark.view) Tunelark.view.controls.showMainFileName();
}

function setDuration(text) {
  Tunelark.state.duration = Tunelark.text(text);
  if (Tunelark.view) Tunelark.view.controls.showDuration();
}

// Runs ten times a second: touches one text node at most.
function setCurrent(text) {
  Tunelark.state.current = Tunelark.text(text);
  if (Tunelark.view) Tunelark.view.controls.showCurrent();
}

// Runs ten times a second: touches the slider's value at most.
function setSliderCurrentValue(value) {
  const number = Math.trunc(Number(value));
  if (!Number.isFinite(number)) return;
  Tunelark.state.slider = Math.max(0, Math.min(10000, number));
  if (Tunelark.view) Tunelark.view.controls.showSlider();
}

function setSpeed(text) {
  Tunelark.state.speed = Tunelark.text(text);
  if (Tunelark.view) Tunelark.view.controls.showSpeed();
}

// Only a page reloaded after its process ended gets this: the switches as the native side holds them.
// Nothing is posted back, as the lyrics window is already in that state.
function setLyricsSwitches(needOn, rows) {
  Tunelark.state.lyricsOn = needOn === true || needOn === 'true';
  if (rows === 'oneRow' || rows === 'towRows') Tunelark.state.rows = rows;
  if (Tunelark.view) Tunelark.view.controls.showLyricsSwitches();
}
