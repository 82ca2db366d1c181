// The page: one card for each adapter, and plots and targets of the one that was chosen.

import {element, span, state} from './format.js';
import {Plots} from './plot.js';
import {get, setToken} from './server.js';
import {Targets} from './targets.js';

const USUAL_INTERVAL = 5000; // milliseconds
const cards = document.querySelector('#cards');
const connection = document.querySelector('#connection');
const login = document.querySelector('#login');
const adapters = document.querySelector('#adapters');

let plots = null;
let targets = null;
let chosen = null;
let interval = USUAL_INTERVAL; // at which the server reads the adapters
let timer = null;
let answered = 0;

function row(name, ...values) {
  return element('div', '', element('dt', '', name), element('dd', '', ...values));
}

function errors(adapter) {
  const last = adapter.lastError > 0 ? `, last ${span(Date.now() - adapter.lastError)} ago` : '';
  return adapter.errors === 0 ? 'none' : `${adapter.errors}${last}`;
}

function contents(adapter) {
  const title = element('span', 'title', `Adapter ${adapter.dev}`);
  const notes = [];
  if (adapter.stale) {
    notes.push(state({level: 'warning', text: `stale: last read ${span(adapter.ageMillis)} ago`}));
  }
  if (adapter.failure) {
    notes.push(element('span', 'failure', adapter.failure));
  }
  if (!('model' in adapter)) {
    return [title, ...notes];
  }
  return [title, element('span', 'model', adapter.model), ...notes, element('dl', '',
    row('State', state(adapter.state)), row('Link', state(adapter.link)), row('Sessions', state(adapter.sessions)),
    row('Errors', errors(adapter)), row('Address', adapter.address ?? 'none'), row('Serial', adapter.serial))];
}

function showCards(list) {
  for (const adapter of list) {
    let card = cards.querySelector(`[data-dev="${adapter.dev}"]`);
    if (!card) {
      card = element('button', 'card');
      card.dataset.dev = adapter.dev;
      card.addEventListener('click', () => choose(adapter.dev));
      const next = [...cards.children].find(other => Number(other.dataset.dev) > adapter.dev);
      cards.insertBefore(card, next ?? null);
    }
    card.dataset.stale = adapter.stale;
    card.setAttribute('aria-pressed', `${adapter.dev === chosen}`);
    card.replaceChildren(...contents(adapter));
  }
}

function choose(dev) {
  chosen = dev;
  for (const card of cards.children) {
    card.setAttribute('aria-pressed', `${Number(card.dataset.dev) === dev}`);
  }
  document.querySelector('#plot-title').textContent = `Adapter ${dev}: the last hour`;
  document.querySelector('#targets-title').textContent = `Adapter ${dev}: targets`;
  plots.forget();
  targets.forget(dev);
  refresh();
}

async function refresh() {
  clearTimeout(timer);
  try {
    const overview = await get('data/adapters');
    interval = overview.intervalMillis;
    login.hidden = true;
    adapters.hidden = false;
    plots ??= new Plots(document.querySelector('#plots'), document.querySelector('#moment'));
    targets ??= new Targets(document);
    showCards(overview.adapters);
    if (chosen === null && overview.adapters.length > 0) {
      choose(overview.adapters[0].dev);
      return;
    }
    await showChosen(chosen);
    answered = Date.now();
  } catch (error) {
    login.hidden = !error.needsToken;
    connection.textContent = error.needsToken ? 'the token is needed'
      : `no answer${answered > 0 ? ` for ${span(Date.now() - answered)}` : ''}: ${error.message}`;
    connection.dataset.level = 'bad';
    if (error.needsToken) {
      return;
    }
    timer = setTimeout(refresh, interval);
    return;
  }
  connection.textContent = `read every ${span(interval)}`;
  connection.dataset.level = 'good';
  // Twice as often as the server, so that what it read is never old for long.
  timer = setTimeout(refresh, interval / 2);
}

async function showChosen(dev) {
  if (dev === null) {
    return;
  }
  const [history, list] =
    await Promise.all([get(`data/history/${dev}?after=${plots.last}`), get(`data/targets/${dev}`)]);
  // Another one may have been chosen meanwhile.
  if (dev === chosen) {
    plots.add(history);
    targets.update(list);
  }
}

login.addEventListener('submit', event => {
  event.preventDefault();
  setToken(document.querySelector('#token').value);
  refresh();
});
refresh();
