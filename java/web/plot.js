// The plots of one adapter: frames, bytes and PDUs per second, and connection errors, on one time axis.
/* global Dygraph */

import {element, moment, rate, shortNumber} from './format.js';

const SPAN = 3600000; // milliseconds
const LEAST_SPAN = 120000;
const PLOTS = [
  {title: 'Ethernet frames', unit: '', lines: ['framesSent', 'framesReceived']},
  {title: 'Bytes', unit: 'B', lines: ['bytesSent', 'bytesReceived']},
  {title: 'iSCSI PDUs', unit: '', lines: ['pdusSent', 'pdusReceived']},
  {title: 'Connection errors', lines: ['errors']},
];

// The library's own legend is written with styles inside, which the page's policy forbids.
Dygraph.PLUGINS = Dygraph.PLUGINS.filter(plugin => plugin !== Dygraph.Plugins.Legend);

function colour(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}

// A line from the ground up for each point that is not 0.
function drawBars(drawing) {
  const context = drawing.drawingContext;
  const ground = drawing.dygraph.toDomYCoord(0);
  context.strokeStyle = drawing.color;
  context.lineWidth = 3;
  for (const point of drawing.points) {
    if (point.yval > 0) {
      context.beginPath();
      context.moveTo(point.canvasx, ground);
      context.lineTo(point.canvasx, point.canvasy);
      context.stroke();
    }
  }
}

function wholeNumber(value) {
  return Number.isInteger(value) ? shortNumber(value) : '';
}

function colours(lines) {
  return lines.length === 1 ? [colour('--bad')] : [colour('--sent'), colour('--received')];
}

export class Plots {
  constructor(place, momentShown) {
    this.momentShown = momentShown;
    this.charts = PLOTS.map(plot => this.#make(place, plot));
    this.forget();
    matchMedia('(prefers-color-scheme: dark)').addEventListener('change', () => this.#recolour());
  }

  #make(place, plot) {
    const values = element('span', 'values');
    const canvas = element('div', 'canvas');
    place.append(element('figure', '', element('figcaption', '', element('b', '', plot.title), ' ', values), canvas));
    const isErrors = plot.lines.length === 1;
    const dygraph = new Dygraph(canvas, [[Date.now(), ...plot.lines.map(() => null)]], {
      labels: ['time', ...plot.lines],
      colors: colours(plot.lines),
      interactionModel: {},
      includeZero: true,
      strokeWidth: 1.5,
      highlightCircleSize: 2.5,
      axisLineColor: colour('--line'),
      gridLineColor: colour('--line'),
      ...isErrors && {plotter: drawBars},
      axes: {
        x: {drawAxis: isErrors, axisLabelFontSize: 11, drawGrid: true, pixelsPerLabel: 70},
        y: {axisLabelWidth: 46, axisLabelFontSize: 11, axisLabelFormatter: isErrors ? wholeNumber : shortNumber,
          pixelsPerLabel: 22},
      },
      highlightCallback: (event, time, points, row) => this.#select(row),
      unhighlightCallback: () => this.#select(-1),
    });
    return {...plot, dygraph, values};
  }

  /** The time after which points are missing. */
  get last() {
    return this.times.at(-1) ?? 0;
  }

  /** Begins with another adapter. */
  forget() {
    this.times = [];
    for (const chart of this.charts) {
      chart.data = [];
    }
    this.selected = -1;
  }

  /** Adds the points that came since, and drops what is older than an hour. */
  add(history) {
    const now = Date.now();
    history.times.forEach((time, i) => {
      this.times.push(time);
      for (const chart of this.charts) {
        chart.data.push([new Date(time), ...chart.lines.map(line => history[line][i])]);
      }
    });
    while (this.times.length > 0 && this.times[0] < now - SPAN) {
      this.times.shift();
      this.charts.forEach(chart => chart.data.shift());
    }
    const start = Math.min(this.times[0] ?? now, now - LEAST_SPAN);
    for (const chart of this.charts) {
      // An axis of its own for a line that stays at 0.
      const highest = Math.max(1, ...chart.data.map(row => Math.max(...row.slice(1))));
      chart.dygraph.updateOptions({
        file: chart.data.length > 0 ? chart.data : [[new Date(now), ...chart.lines.map(() => null)]],
        dateWindow: [start, now],
        valueRange: [0, highest * 1.1],
      });
    }
    this.#showValues();
  }

  #select(row) {
    if (row === this.selected) {
      return;
    }
    this.selected = row;
    for (const chart of this.charts) {
      if (row < 0) {
        chart.dygraph.clearSelection();
      } else {
        chart.dygraph.setSelection(row);
      }
    }
    this.#showValues();
  }

  // Those of the moment that the pointer is at, or the latest.
  #showValues() {
    const row = this.selected >= 0 ? this.selected : this.times.length - 1;
    this.momentShown.textContent = row < 0 ? '' : this.selected < 0 ? 'now' : `at ${moment(this.times[row])}`;
    for (const chart of this.charts) {
      const values = chart.data[row]?.slice(1) ?? chart.lines.map(() => null);
      if (chart.lines.length === 1) {
        const all = chart.data.reduce((sum, point) => sum + point[1], 0);
        chart.values.textContent = this.selected < 0 ? `${all} in this time` : `${values[0] ?? '–'}`;
      } else {
        chart.values.replaceChildren(element('span', 'sent', rate(values[0], chart.unit)), ' ',
          element('span', 'received', rate(values[1], chart.unit)));
      }
    }
  }

  #recolour() {
    for (const chart of this.charts) {
      chart.dygraph.updateOptions({
        colors: colours(chart.lines),
        axisLineColor: colour('--line'),
        gridLineColor: colour('--line'),
      });
    }
  }
}
