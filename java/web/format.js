// Numbers and times as people read them, and elements made of them.

const DECIMAL = ['', 'k', 'M', 'G', 'T', 'P', 'E'];
const BINARY = ['bytes', 'KiB', 'MiB', 'GiB', 'TiB', 'PiB', 'EiB'];

function scaled(value, base, names, largestWithDecimal = Infinity) {
  let order = 0;
  while (Math.abs(value) >= base && order < names.length - 1) {
    value /= base;
    ++order;
  }
  const digits = order === 0 && Number.isInteger(value) || value >= largestWithDecimal ? 0 : 1;
  return [value.toFixed(digits), names[order]];
}

/** A rate: "1.2 kB/s". */
export function rate(value, unit) {
  if (value === null || Number.isNaN(value)) {
    return '–';
  }
  const [number, prefix] = scaled(value, 1000, DECIMAL, 100);
  return prefix + unit === '' ? `${number}/s` : `${number} ${prefix}${unit}/s`;
}

/** A number for the edge of a plot: "1.2k". */
export function shortNumber(value) {
  return Number(value.toPrecision(3)) === 0 ? '0' : scaled(Number(value.toPrecision(3)), 1000, DECIMAL, 100).join('')
    .replace('.0', '');
}

/** The size of a unit: "64.0 GiB", "512 bytes". */
export function size(bytes) {
  return scaled(Number(bytes), 1024, BINARY).join(' ');
}

/** A span of time: "12 s", "3 min", "5 h", "2 days". */
export function span(milliseconds) {
  const seconds = Math.max(0, Math.round(milliseconds / 1000));
  if (seconds < 120) {
    return `${seconds} s`;
  }
  const minutes = Math.round(seconds / 60);
  if (minutes < 120) {
    return `${minutes} min`;
  }
  const hours = Math.round(minutes / 60);
  return hours < 48 ? `${hours} h` : `${Math.round(hours / 24)} days`;
}

/** A point in time, of today without the date. */
export function moment(epochMillis) {
  const time = new Date(epochMillis);
  const ofToday = time.toDateString() === new Date().toDateString();
  return ofToday ? time.toLocaleTimeString('en-GB') : time.toLocaleString('en-GB');
}

/** An element with a class and contents: text or other elements. */
export function element(name, className, ...contents) {
  const made = document.createElement(name);
  if (className) {
    made.className = className;
  }
  made.append(...contents);
  return made;
}

/** A state in words, with the mark of its level. */
export function state(value) {
  const made = element('span', 'state', value.text);
  made.dataset.level = value.level;
  return made;
}
