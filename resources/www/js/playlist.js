'use strict';
// The play list view. Only the rows in sight (and a few beyond) are in the document, so a list of any
// length renders at once and scrolling rebuilds a screenful of rows in one string.
Tunelark.PlayList = class {
  constructor() {
    this.state = Tunelark.state;
    this.viewport = document.getElementById('list-viewport');
    this.sizer = document.getElementById('list-sizer');
    this.rowsEl = document.getElementById('list-rows');
    this.dropLine = document.getElementById('drop-line');
    this.emptyEl = document.getElementById('empty-state');
    this.countEl = document.getElementById('track-count');
    this.columnsEl = document.querySelector('.columns');
    // Rows have one fixed height, set in the style sheet; positions are computed from it.
    this.rowHeight = parseFloat(getComputedStyle(document.documentElement).getPropertyValue('--row-height')) || 52;
    this.overscan = 6;
    this.first = 0;
    this.last = 0;
    this.viewHeight = this.viewport.clientHeight;
    this.dragFrom = -1;
    this.onChange = () => {};  // the order or a lyric encoding changed here
    this.optionsHtml = '';
    this.icons = {
      play: Tunelark.icons.svg('play'), pause: Tunelark.icons.svg('pause'),
      remove: Tunelark.icons.svg('remove'), lyric: Tunelark.icons.svg('lyric'),
      speaker: Tunelark.icons.svg('speaker'),
    };
    this.bindEvents();
  }

  // The records changed: numbers, count, height and the rows in sight.
  itemsChanged() {
    const count = this.state.items.length;
    if (this.state.selected >= count) this.state.selected = count - 1;
    this.countEl.textContent = count === 0 ? Tunelark.t('No tracks')
      : Tunelark.t(count === 1 ? '{0} track' : '{0} tracks', Tunelark.count(count));
    this.sizer.style.height = count * this.rowHeight + 'px';
    this.viewport.setAttribute('aria-rowcount', String(count));
    this.emptyEl.hidden = count > 0;
    this.viewport.hidden = count === 0;
    this.columnsEl.hidden = count === 0;
    this.render(true);
  }

  charsetNamesChanged() {
    const esc = Tunelark.escapeHtml;
    this.optionsHtml = this.state.charsetNames
      .map((name) => '<option value="' + esc(name) + '">' + esc(name) + '</option>').join('');
    this.render(true);
  }

  // Rebuilds the rows in sight when the range moved (or always, when forced).
  render(force) {
    const count = this.state.items.length;
    const height = Math.max(this.viewHeight, 600);
    const top = this.viewport.scrollTop;
    const first = Math.max(0, Math.floor(top / this.rowHeight) - this.overscan);
    const last = Math.min(count, Math.ceil((top + height) / this.rowHeight) + this.overscan);
    if (!force && first === this.first && last === this.last) return;
    this.first = first;
    this.last = last;
    let html = '';
    for (let i = first; i < last; i++) html += this.rowHtml(this.state.items[i], i);
    this.rowsEl.innerHTML = html;
    this.rowsEl.style.transform = 'translateY(' + first * this.rowHeight + 'px)';
    this.showActiveRow();
  }

  // Screen readers follow the selection through the list's active descendant; focus stays on the list.
  showActiveRow() {
    const row = this.rowElement(this.state.selected);
    if (row) this.viewport.setAttribute('aria-activedescendant', row.id);
    else this.viewport.removeAttribute('aria-activedescendant');
  }

  rowHtml(item, index) {
    const esc = Tunelark.escapeHtml;
    const state = this.state;
    const playing = index === state.playingIndex;
    const name = esc(item.name);
    let cls = 'row';
    if (playing) cls += ' playing';
    if (index === state.selected) cls += ' selected';
    return '<div class="' + cls + '" role="row" aria-rowindex="' + (index + 1) + '" aria-selected="' +
      (index === state.selected) + '" aria-label="' + name + '" draggable="true" id="row-' + index +
      '" data-index="' + index + '"' + (playing ? ' aria-current="true"' : '') + '>' +
      '<span class="row-no" role="gridcell"><span class="num">' + (index + 1) + '</span><span class="now">' +
      this.icons.speaker + '</span></span>' +
      '<span class="cell" role="gridcell"><button type="button" class="row-play" data-action="play" tabindex="-1" ' +
      'aria-label="' + this.playLabel(index, name) + '"><span class="i-play">' + this.icons.play +
      '</span><span class="i-pause">' + this.icons.pause + '</span></button></span>' +
      '<span class="row-title" role="gridcell"><span class="row-name" title="' +
      esc(Tunelark.readablePath(item.filePath)) + '">' + name + '</span><span class="row-folder">' +
      esc(item.folder) + '</span></span>' +
      this.lyricHtml(state.lyricsByMain.get(item.mainPathFileName)) +
      '<span class="cell" role="gridcell"><button type="button" class="row-remove" data-action="remove" ' +
      'tabindex="-1" aria-label="' + Tunelark.t('Remove {0}', name) + '" title="' +
      Tunelark.t('Remove from the play list') + '">' + this.icons.remove + '</button></span></div>';
  }

  lyricHtml(lyric) {
    if (!lyric) return '<span class="row-lyric none" role="gridcell">' + Tunelark.t('No lyric file') + '</span>';
    const esc = Tunelark.escapeHtml;
    const charset = esc(lyric.charset);
    const known = '<option value="' + charset + '">';
    const options = this.optionsHtml.includes(known)
      ? this.optionsHtml.replace(known, '<option value="' + charset + '" selected>')
      : '<option value="' + charset + '" selected>' + charset + '</option>' + this.optionsHtml;
    return '<span class="row-lyric" role="gridcell"><span class="lyric-icon">' + this.icons.lyric + '</span>' +
      '<span class="lyric-name" title="' + esc(Tunelark.readablePath(lyric.filePath)) + '">' +
      esc(lyric.fileName) + '</span><select class="charset" data-action="charset" aria-label="' +
      Tunelark.t('Encoding of {0}', esc(lyric.fileName)) + '">' + options + '</select></span>';
  }

  playLabel(index, name) {
    return Tunelark.t(index === this.state.playingIndex && this.state.isPlaying ? 'Pause {0}' : 'Play {0}', name);
  }

  rowElement(index) {
    if (index < this.first || index >= this.last) return null;
    return this.rowsEl.children[index - this.first] || null;
  }

  // Updates the marks of one row in place, so that controls inside it keep their focus.
  patchRow(index) {
    const row = this.rowElement(index);
    if (!row) return;
    const playing = index === this.state.playingIndex;
    row.classList.toggle('playing', playing);
    row.classList.toggle('selected', index === this.state.selected);
    Tunelark.setAttr(row, 'aria-selected', String(index === this.state.selected));
    if (playing) Tunelark.setAttr(row, 'aria-current', 'true');
    else if (row.hasAttribute('aria-current')) row.removeAttribute('aria-current');
    Tunelark.setAttr(row.querySelector('.row-play'), 'aria-label', this.playLabel(index, this.state.items[index].name));
  }

  select(index, reveal) {
    const count = this.state.items.length;
    if (count === 0) return;
    const next = Math.max(0, Math.min(count - 1, index));
    const previous = this.state.selected;
    this.state.selected = next;
    this.patchRow(previous);
    if (reveal) this.reveal(next);
    this.patchRow(next);
    this.showActiveRow();
  }

  reveal(index) {
    const top = index * this.rowHeight;
    const height = this.viewport.clientHeight;
    if (top < this.viewport.scrollTop) this.viewport.scrollTop = top;
    else if (top + this.rowHeight > this.viewport.scrollTop + height) {
      this.viewport.scrollTop = top + this.rowHeight - height;
    }
    this.render(false);
  }

  indexOf(target) {
    const row = target && target.closest ? target.closest('.row') : null;
    return row ? Number(row.dataset.index) : -1;
  }

  bindEvents() {
    this.viewport.addEventListener('scroll', () => this.render(false), { passive: true });
    new ResizeObserver(() => {
      this.viewHeight = this.viewport.clientHeight;
      this.render(false);
    }).observe(this.viewport);
    this.rowsEl.addEventListener('click', (e) => this.onClick(e));
    this.rowsEl.addEventListener('dblclick', (e) => this.onDoubleClick(e));
    this.rowsEl.addEventListener('change', (e) => this.onCharsetChange(e));
    this.rowsEl.addEventListener('dragstart', (e) => this.onDragStart(e));
    this.viewport.addEventListener('dragover', (e) => this.onDragOver(e));
    this.viewport.addEventListener('drop', (e) => this.onDrop(e));
    this.viewport.addEventListener('dragleave', (e) => {
      if (!this.viewport.contains(e.relatedTarget)) this.dropLine.hidden = true;
    });
    window.addEventListener('dragend', () => this.endDrag(), true);
  }

  onClick(e) {
    const index = this.indexOf(e.target);
    if (index < 0) return;
    if (!e.target.closest('select')) this.select(index, false);
    const action = e.target.closest('[data-action]');
    if (!action) return;
    if (action.dataset.action === 'play') this.playOrPause(index);
    else if (action.dataset.action === 'remove') this.remove(index);
  }

  onDoubleClick(e) {
    if (e.target.closest('button, select')) return;
    const index = this.indexOf(e.target);
    if (index >= 0) this.play(index);
  }

  onCharsetChange(e) {
    if (!e.target.matches('select.charset')) return;
    const item = this.state.items[this.indexOf(e.target)];
    const lyric = item && this.state.lyricsByMain.get(item.mainPathFileName);
    if (!lyric) return;
    lyric.charset = e.target.value;
    this.onChange();
    Tunelark.post('nativeSetCharset', { mainPathFileName: lyric.mainPathFileName, charset: lyric.charset });
  }

  play(index) {
    const item = this.state.items[index];
    if (item) Tunelark.post('nativePlayItem', { filePath: item.filePath });
  }

  // The row button pauses the track that is playing and plays any other.
  playOrPause(index) {
    const item = this.state.items[index];
    if (!item) return;
    if (index === this.state.playingIndex && this.state.isPlaying) {
      Tunelark.post('nativePauseItem', { filePath: item.filePath });
    } else {
      this.play(index);
    }
  }

  // The native side removes the entry and sends the new list.
  remove(index) {
    const item = this.state.items[index];
    if (item) Tunelark.post('nativeRemove', { filePath: item.filePath });
  }

  // Moves a record to its new position here, then tells the native side (0-based positions).
  move(from, to) {
    const items = this.state.items;
    if (from === to || from < 0 || to < 0 || from >= items.length || to >= items.length) return;
    const selectedItem = items[this.state.selected];
    const [item] = items.splice(from, 1);
    items.splice(to, 0, item);
    this.state.selected = selectedItem ? items.indexOf(selectedItem) : -1;
    Tunelark.syncPlayingIndex();
    this.render(true);
    this.onChange();
    Tunelark.post('nativeMoveItem', { fromIndex: from, toIndex: to });
  }

  onDragStart(e) {
    const index = this.indexOf(e.target);
    if (index < 0) return;
    this.dragFrom = index;
    if (e.dataTransfer) {
      e.dataTransfer.effectAllowed = 'move';
      e.dataTransfer.setData('text/plain', this.state.items[index].name);
    }
    e.target.closest('.row').classList.add('dragging');
  }

  // The gap between rows nearest to the pointer: 0 before the first row, count after the last.
  gapAt(clientY) {
    const rect = this.viewport.getBoundingClientRect();
    const y = clientY - rect.top + this.viewport.scrollTop;
    return Math.max(0, Math.min(this.state.items.length, Math.round(y / this.rowHeight)));
  }

  onDragOver(e) {
    if (this.dragFrom < 0) return;
    e.preventDefault();
    if (e.dataTransfer) e.dataTransfer.dropEffect = 'move';
    const gap = this.gapAt(e.clientY);
    this.dropLine.hidden = false;
    this.dropLine.style.transform = 'translateY(' + (gap * this.rowHeight - 1) + 'px)';
  }

  onDrop(e) {
    if (this.dragFrom < 0) return;
    e.preventDefault();
    const from = this.dragFrom;
    const gap = this.gapAt(e.clientY);
    this.endDrag();
    this.move(from, gap > from ? gap - 1 : gap);
  }

  endDrag() {
    this.dragFrom = -1;
    this.dropLine.hidden = true;
    const dragging = this.rowsEl.querySelector('.dragging');
    if (dragging) dragging.classList.remove('dragging');
  }
};
