// Plots of channels, one a unit. Their cursor is the time of the run.
import uPlot from 'uplot';

const kColours = ['#c2410c', '#1d4ed8', '#15803d', '#a21caf', '#b45309', '#0e7490'];
const kHeight = 170;

/** Reads the table of HyChannels: titles and columns. */
export function parseTable(text) {
  const lines = text.trim().split('\n');
  const titles = [];
  const cell = /(?:^|,)(?:"((?:[^"]|"")*)"|([^,]*))/g;
  for (const match of lines[0].matchAll(cell)) titles.push(match[1]?.replaceAll('""', '"') ?? match[2]);
  const rows = lines.slice(1).map((line) => line.split(',').map(Number));
  const columns = titles.map((_, i) => rows.map((row) => (Number.isFinite(row[i]) ? row[i] : null)));
  return { titles, columns };
}

export class Plots {
  /** @param {HTMLElement} host @param {string} table @param {(time: number) => void} seek */
  constructor(host, table, seek) {
    this.plots = [];
    this.time = 0;
    const { titles, columns } = parseTable(table);
    const byUnit = new Map();
    titles.slice(1).forEach((title, i) => {
      const unit = /\(([^()]*)\)$/.exec(title)?.[1] ?? '';
      if (!byUnit.has(unit)) byUnit.set(unit, []);
      byUnit.get(unit).push({ title, column: columns[i + 1] });
    });
    for (const [unit, channels] of byUnit) this.add(host, unit, columns[0], channels, seek);
    new ResizeObserver(() => this.resize(host)).observe(host);
  }

  add(host, unit, times, channels, seek) {
    const options = {
      width: Math.max(host.clientWidth - 16, 200),
      height: kHeight,
      legend: { live: false },
      cursor: { drag: { x: false, y: false }, points: { show: false } },
      scales: { x: { time: false } },
      axes: [{ label: 's', labelSize: 16, size: 34 }, { label: unit, labelSize: 16, size: 62 }],
      series: [{}, ...channels.map(({ title }, i) => ({
        label: title, stroke: kColours[i % kColours.length], width: 1.5,
      }))],
      hooks: { draw: [(plot) => this.drawCursor(plot)] },
    };
    const plot = new uPlot(options, [times, ...channels.map(({ column }) => column)], host);
    const seekTo = (event) => seek(plot.posToVal(event.offsetX, 'x'));
    plot.over.addEventListener('pointerdown', seekTo);
    plot.over.addEventListener('pointermove', (event) => { if (event.buttons & 1) seekTo(event); });
    this.plots.push(plot);
  }

  drawCursor(plot) {
    const x = Math.round(plot.valToPos(this.time, 'x', true));
    const { ctx, bbox } = plot;
    ctx.save();
    ctx.strokeStyle = '#111827';
    ctx.lineWidth = window.devicePixelRatio;
    ctx.beginPath();
    ctx.moveTo(x, bbox.top);
    ctx.lineTo(x, bbox.top + bbox.height);
    ctx.stroke();
    ctx.restore();
  }

  seek(time) {
    this.time = time;
    for (const plot of this.plots) plot.redraw(false, false);
  }

  resize(host) {
    for (const plot of this.plots)
      plot.setSize({ width: Math.max(host.clientWidth - 16, 200), height: kHeight });
  }
}
