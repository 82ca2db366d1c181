// The table of targets. A row opens to show the units of its target and what the log tells of it.

import {element, moment, size, state} from './format.js';
import {get} from './server.js';

const COLUMNS = 5;

export class Targets {
  constructor(page) {
    this.table = page.querySelector('#targets');
    this.counts = page.querySelector('#target-counts');
    this.none = page.querySelector('#no-targets');
    this.filter = page.querySelector('#filter');
    this.trouble = page.querySelector('#trouble');
    this.filter.addEventListener('input', () => this.#showChosen());
    this.trouble.addEventListener('change', () => this.#showChosen());
    this.table.addEventListener('keydown', event => this.#move(event));
    this.forget(null);
  }

  /** Begins with another adapter. */
  forget(dev) {
    this.dev = dev;
    this.rows = new Map();
    this.table.replaceChildren(this.table.tHead);
  }

  /** Shows the targets as they are now. */
  update(targets) {
    const present = new Set(targets.map(target => target.id));
    for (const [id, row] of this.rows) {
      if (!present.has(id)) {
        row.body.remove();
        this.rows.delete(id);
      }
    }
    let before = this.table.tHead;
    for (const target of targets) {
      let row = this.rows.get(target.id);
      if (!row) {
        row = this.#makeRow(target.id);
        this.rows.set(target.id, row);
        before.after(row.body);
      }
      before = row.body;
      this.#fill(row, target);
    }
    const troubled = targets.filter(target => target.state.level === 'bad').length;
    this.counts.textContent = `${targets.length}` + (troubled > 0 ? `, ${troubled} with trouble` : '');
    this.#showChosen();
  }

  #makeRow(id) {
    const button = element('button', 'name');
    button.setAttribute('aria-expanded', 'false');
    const row = {
      button,
      state: element('td', ''),
      portal: element('td', 'portal'),
      errors: element('td', 'number'),
      body: document.createElement('tbody'),
      details: null,
    };
    const line = element('tr', '', element('td', 'number id', `${id}`), row.state, element('td', '', button),
      row.portal, row.errors);
    line.addEventListener('click', () => this.#toggle(id, row));
    row.body.append(line);
    return row;
  }

  #fill(row, target) {
    const content = JSON.stringify(target);
    if (row.content === content) {
      return;
    }
    const hadErrors = row.target?.errors;
    row.content = content;
    row.target = target;
    row.body.dataset.level = target.state.level;
    row.state.replaceChildren(state(target.state));
    row.button.textContent = target.name || '(no name)';
    row.portal.textContent = target.address.includes(':') ? `[${target.address}]:${target.port}`
      : `${target.address}:${target.port}`;
    row.errors.textContent = `${target.errors}`;
    if (row.details && hadErrors !== target.errors) {
      this.#showLog(target.id, row);
    }
  }

  #showChosen() {
    const text = this.filter.value.trim().toLowerCase();
    let any = false;
    for (const row of this.rows.values()) {
      const found = `${row.target.id} ${row.target.name} ${row.portal.textContent}`.toLowerCase().includes(text);
      row.body.hidden = !found || this.trouble.checked && row.target.state.level !== 'bad';
      any ||= !row.body.hidden;
    }
    this.none.hidden = any;
    this.table.hidden = !any;
  }

  #move(event) {
    const step = {ArrowDown: 1, ArrowUp: -1}[event.key];
    if (step) {
      const buttons = [...this.table.querySelectorAll('tbody:not([hidden]) button.name')];
      const next = buttons[buttons.indexOf(document.activeElement) + step];
      if (next) {
        event.preventDefault();
        next.focus();
      }
    }
  }

  #toggle(id, row) {
    if (row.details) {
      row.details.remove();
      row.details = null;
    } else {
      row.units = element('div', '', 'asking the target …');
      row.log = element('div', '');
      const cell = element('td', '', element('h3', '', 'Logical units'), row.units, element('h3', '', 'Log'), row.log);
      cell.colSpan = COLUMNS;
      row.details = element('tr', 'details', cell);
      row.body.append(row.details);
      this.#showUnits(id, row);
      this.#showLog(id, row);
    }
    row.button.setAttribute('aria-expanded', `${row.details !== null}`);
  }

  async #showUnits(id, row) {
    const place = row.units;
    try {
      const units = await get(`data/units/${this.dev}/${id}`);
      place.replaceChildren(table(['LUN', 'Vendor', 'Product', 'Size'], units.map(unit => 'vendor' in unit
        ? [`${unit.lun}`, unit.vendor, unit.product, (unit.isMinimum ? 'at least ' : '') + size(unit.bytes)]
        : [`${unit.lun}`, 'not known', '', ''])));
    } catch (error) {
      place.replaceChildren(state({level: 'bad', text: error.message}));
    }
  }

  async #showLog(id, row) {
    const place = row.log;
    try {
      const entries = await get(`data/log/${this.dev}/${id}`);
      place.replaceChildren(entries.length === 0 ? 'Nothing is logged.'
        : table(['Last', 'What', 'How often'], entries.map(entry => [entry.time === null ? 'not known' : moment(entry.time), state(entry.what),
          `${entry.count}`])));
    } catch (error) {
      place.replaceChildren(state({level: 'bad', text: error.message}));
    }
  }
}

function table(headings, rows) {
  const head = element('tr', '', ...headings.map(heading => element('th', '', heading)));
  const body = rows.map(row => element('tr', '', ...row.map(cell => element('td', '', cell))));
  return element('table', '', element('thead', '', head), element('tbody', '', ...body));
}
