'use strict';
// Inline SVG icons on a 24-unit grid. Stroked icons follow the text colour; a few are filled.
Tunelark.icons = (function () {
  const stroked = {
    add: 'M12 5v14M5 12h14',
    plus: 'M12 6v12M6 12h12',
    minus: 'M6 12h12',
    clear: 'M4 7h16M10 11v6M14 11v6M6 7l1 13h10l1-13M9 7V4h6v3',
    info: 'M12 3a9 9 0 1 0 0 18a9 9 0 1 0 0-18M12 11v6M12 7.5v.01',
    maximise: 'M4 9V4h5M20 9V4h-5M4 15v5h5M20 15v5h-5',
    note: 'M9 18V5l12-2v13M6 15a3 3 0 1 0 0 6a3 3 0 1 0 0-6M18 13a3 3 0 1 0 0 6a3 3 0 1 0 0-6',
    disc: 'M12 2.5a9.5 9.5 0 1 0 0 19a9.5 9.5 0 1 0 0-19M12 9a3 3 0 1 0 0 6a3 3 0 1 0 0-6M6.5 12a5.5 5.5 0 0 1 5.5-5.5',
    copy: 'M10 8h9a1 1 0 0 1 1 1v10a1 1 0 0 1-1 1h-9a1 1 0 0 1-1-1V9a1 1 0 0 1 1-1M15 8V5a1 1 0 0 0-1-1H5a1 1 0 0 0-1 1v9a1 1 0 0 0 1 1h4',
    lineUp: 'M7 14l5-5 5 5',
    lineDown: 'M7 10l5 5 5-5',
    cycle: 'M17 3l3 3-3 3M4 11V9a3 3 0 0 1 3-3h13M7 21l-3-3 3-3M20 13v2a3 3 0 0 1-3 3H4',
    random: 'M16 4h4v4M4 20L20 4M20 16v4h-4M14.5 14.5L20 20M4 4l5 5',
    sequence: 'M4 6h11M4 12h11M4 18h7M19 9v11M16 17l3 3 3-3',
    remove: 'M7 7l10 10M17 7L7 17',
    lyric: 'M4 6h12M4 11h9M4 16h6M17 10v8M17 10l4-1.5',
    speaker: 'M11 5L6.5 9H3v6h3.5L11 19zM15.5 8.5a5 5 0 0 1 0 7M18.5 5.5a9 9 0 0 1 0 13',
  };
  const filled = {
    play: 'M8 5.5v13a1 1 0 0 0 1.5.86l10.5-6.5a1 1 0 0 0 0-1.72L9.5 4.64A1 1 0 0 0 8 5.5z',
    pause: 'M7 5h3.5v14H7zM13.5 5H17v14h-3.5z',
    prev: 'M5 5h2.5v14H5zM19 6.2v11.6a1 1 0 0 1-1.55.83L9.2 13.1a1.3 1.3 0 0 1 0-2.2l8.25-5.53A1 1 0 0 1 19 6.2z',
    next: 'M16.5 5H19v14h-2.5zM5 6.2v11.6a1 1 0 0 0 1.55.83l8.25-5.53a1.3 1.3 0 0 0 0-2.2L6.55 5.37A1 1 0 0 0 5 6.2z',
    grip: 'M9 6h.01M15 6h.01M9 12h.01M15 12h.01M9 18h.01M15 18h.01',
  };

  function svg(name) {
    if (name in filled && name !== 'grip') {
      return '<svg class="icon" viewBox="0 0 24 24" aria-hidden="true" focusable="false">' +
        '<path fill="currentColor" d="' + filled[name] + '"/></svg>';
    }
    const d = name === 'grip' ? filled.grip : stroked[name];
    if (d === undefined) return '';
    const width = name === 'grip' ? '3' : '2';
    return '<svg class="icon" viewBox="0 0 24 24" aria-hidden="true" focusable="false">' +
      '<path fill="none" stroke="currentColor" stroke-width="' + width +
      '" stroke-linecap="round" stroke-linejoin="round" d="' + d + '"/></svg>';
  }

  // Fills every element marked with data-icon below root.
  function fill(root) {
    for (const el of root.querySelectorAll('[data-icon]')) el.innerHTML = svg(el.dataset.icon);
  }

  return { svg: svg, fill: fill };
})();
