'use strict';
// Sample data for the screenshot of the page.
(function () {
  const names = ['utf8', 'utf16', 'GB2312', 'GBK', 'GB18030', 'big5', 'EUC_JP', 'EUC_KR', 'iso_8859_1', 'Cyrillic', 'KOI8_R'];
  const tracks = [
    ['Aurora Over the Fjord', 'Hollow Pines'], ['Paper Lanterns', 'Mira Sol'], ['Harbour Song', 'The Tidewater Band'],
    ['Night Train to Lisbon', 'Cassia'], ['Glass Gardens', 'Hollow Pines'], ['晴天的早晨', 'Lin Wei'],
    ['Slow Rivers', 'Mira Sol'], ['Copper & Salt', 'The Tidewater Band'], ['Белые ночи', 'Anya K.'],
    ['Lighthouse Keeper', 'Cassia'], ['Winter "Interlude"', 'Hollow Pines'], ['Moth to the Flame', 'Ode North'],
    ['Sunday Static', 'Ode North'], ['Last Ferry Home', 'The Tidewater Band'],
  ];
  const mp3s = [];
  const lrcs = [];
  tracks.forEach(([title, artist], i) => {
    const folder = '/home/ada/Music/' + artist;
    const base = 'file://' + encodeURI(folder) + '/' + encodeURIComponent(title);
    mp3s.push({ fileName: title + '.mp3', filePath: base + '.mp3', no: i + 1, duration: '', mainPathFileName: base });
    if (i % 4 !== 3) {
      lrcs.push({ fileName: title + '.lrc', filePath: base + '.lrc', charset: i === 5 ? 'GB18030' : i === 8 ? 'Cyrillic' : 'utf8',
        mainPathFileName: base });
    }
  });
  setAllSupportedCharsetNames(JSON.stringify(names));
  setPlayList(JSON.stringify(mp3s), JSON.stringify(lrcs));
  setMode('random');
  setSpeed('1.25');
  setPlayingFilePath(mp3s[2].filePath);
  setMainFileName('Harbour Song');
  setIsPlaying(true);
  setDuration('04:05');
  setCurrent('01:23');
  setSliderCurrentValue(3388);
  document.getElementById('lyrics-toggle').click();
  document.getElementById('rows-two').click();
  Tunelark.view.playList.select(5, false);
})();
