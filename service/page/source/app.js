// The page: what it shows, where, and what it hears of.
import {choices, html, plural} from './dom.js';
import {Machine} from './machine.js';
import {isLoggedIn, listen, load, LoginNeeded, logOut, NotNow} from './server.js';
import {drawOverview, titleOf} from './overview.js';
import {drawTable} from './table.js';
import {drawPart} from './part.js';
import {drawHistory} from './changes.js';
import {drawLogin} from './login.js';

const MARKED_FOR = 8000;

const main = document.getElementById('main'), nav = document.getElementById('classes'), live = document.getElementById('live'),
      news = document.getElementById('news'), logout = document.getElementById('logout');

let machine = null, classes = null, history = {changes: [], error: ''};
let marked = new Set(), markedUntil = 0;
let isListening = false, listening = null;

// ---- Colours

const theme = document.getElementById('theme');
function colour(value) {
  theme.value = value;
  if (value) document.documentElement.dataset.theme = value;
  else delete document.documentElement.dataset.theme;
}
colour(choices.get('theme', ''));
theme.addEventListener('change', () => {
  choices.set('theme', theme.value);
  colour(theme.value);
});

// ---- What is shown

function route() {
  const [path, query = ''] = location.hash.replace(/^#\/?/, '').split('?');
  const [name = '', slug = ''] = path.split('/');
  return {name: decoded(name), slug: decoded(slug), parameters: new URLSearchParams(query)};
}

function decoded(text) {
  try {
    return decodeURIComponent(text);
  } catch {
    return text;
  }
}

function viewOf({name, slug, parameters}) {
  if (name === '') return [drawOverview(machine, history), titleOf(machine)];
  if (name === 'changes') return [drawHistory(machine, history), 'Changes'];
  const of = machine.byName.get(name);
  if (of && slug === '') return [classView(of, parameters), name];
  const part = of && machine.find(name, slug);
  if (part) return [drawPart(machine, part, history), part.name];
  return [html('article', {}, html('h1', {}, 'Not there'), html('p', {}, 'The inventory has no such part, or no longer. ', html('a', {href: '#/'}, 'To the machine'))), 'Not there'];
}

function classView(of, parameters) {
  const table = of.parts.length > 0 ? drawTable(of, parameters.get('search') ?? '', parameters.has('only')) :
                                      html('p', {class: 'quiet'}, 'The inventory has none of these.');
  return html('article', {class: 'class-view'}, html('p', {class: 'crumb'}, html('a', {href: '#/'}, 'Machine')), html('h1', {}, of.name), html('p', {class: 'lead'}, of.description), table);
}

function drawNav() {
  const {name} = route();
  const link = (href, text, count, level, isCurrent) => html('li', {class: count === 0 ? 'is-none' : null}, html('a', {href, 'aria-current': isCurrent ? 'page' : null}, html('span', {}, text),
      level && html('span', {class: `dot is-${level}`, title: level === 'warning' ? 'something deserves a look' : 'something is pending'}),
      count !== null && html('span', {class: 'count'}, String(count))));
  nav.replaceChildren(html('ul', {}, link('#/', 'machine', null, '', name === ''), machine.classes.map((of) => {
    const level = of.parts.some((part) => part.level === 'warning') ? 'warning' : of.parts.some((part) => part.isPending) ? 'pending' : '';
    return link(`#/${of.name}`, of.name, of.parts.length, level, name === of.name);
  }), link('#/changes', 'changes', null, '', name === 'changes')));
}

function show({movesFocus = false, keepsPlace = false} = {}) {
  if (machine === null) return;
  nav.hidden = machine.isEmpty;
  logout.hidden = !isLoggedIn();
  document.body.classList.remove('is-plain');
  if (machine.isEmpty) return showNote('Nothing has been collected yet', 'The inventory is there, but empty. It is filled by “zymdb collect”; this page shows it as soon as it is.');
  drawNav();
  const table = keepsPlace ? main.querySelector('inventory-table') : null;
  const kept = table && {search: table.search.value, only: table.only.checked, top: table.scroll.scrollTop, left: table.scroll.scrollLeft};
  const focused = keepsPlace ? pathTo(document.activeElement) : null;
  const [view, title] = viewOf(route());
  main.replaceChildren(view);
  main.classList.remove('is-stale');
  document.title = title === titleOf(machine) ? title : `${title} · ${titleOf(machine)}`;
  document.getElementById('title').textContent = titleOf(machine);
  if (kept) main.querySelector('inventory-table')?.restore(kept);
  if (focused) focused();
  mark();
  if (movesFocus) {
    main.focus({preventScroll: true});
    scrollTo(0, 0);
    news.textContent = title;
  }
}

// How to come back to what has the focus, once it is drawn again.
function pathTo(element) {
  if (!main.contains(element) || element === main) return null;
  const href = element.getAttribute('href'), id = element.id;
  return () => {
    const again = id ? document.getElementById(id) : href ? [...main.querySelectorAll('a')].find((each) => each.getAttribute('href') === href) : main.querySelector(element.localName);
    again?.focus({preventScroll: true});
  };
}

function showNote(heading, text) {
  nav.hidden = machine === null || machine.isEmpty;
  document.title = heading;
  main.replaceChildren(html('article', {class: 'panel note-panel'}, html('h1', {}, heading), html('p', {}, text)));
  news.textContent = `${heading}. ${text}`;
}

function tell(text, kind = '') {
  live.className = 'live ' + kind;
  live.textContent = text;
}

// ---- What has changed just now

function mark() {
  if (marked.size === 0 || Date.now() > markedUntil) return;
  for (const link of main.querySelectorAll('a[href]')) {
    if (marked.has(link.getAttribute('href'))) (link.closest('tr') ?? link).classList.add('is-new');
  }
}
main.addEventListener('drawn', mark);

function markChanges(before) {
  const {changed, gone} = machine.changedSince(before);
  const parts = changed.filter((part) => part.of.name !== 'system');
  marked = new Set(parts.map((part) => part.href));
  markedUntil = Date.now() + MARKED_FOR;
  setTimeout(() => {
    if (Date.now() < markedUntil) return;
    for (const each of main.querySelectorAll('.is-new')) each.classList.remove('is-new');
  }, MARKED_FOR + 50);
  const names = parts.slice(0, 3).map((part) => part.name).join(', ');
  const told = [];
  if (parts.length > 0) told.push(`${plural(parts.length, 'part')} changed: ${names}${parts.length > 3 ? ' and others' : ''}.`);
  if (gone.length > 0) told.push(`${plural(gone.length, 'part')} gone.`);
  return told.join(' ');
}

// ---- What the server tells

async function loadHistory() {
  try {
    history = {...(await load('history.json')), error: ''};
  } catch (error) {
    if (error instanceof LoginNeeded) throw error;
    history = {...history, error: error.message};
  }
}

async function refresh() {
  classes ??= (await load('fields.json')).classes;
  let [inventory, parts] = await Promise.all([load('inventory.json'), load('parts.json')]);
  // Somebody committed between the two.
  for (let i = 0; i < 5 && inventory.generation !== parts.generation; ++i)
    [inventory, parts] = await Promise.all([load('inventory.json'), load('parts.json')]);
  if (inventory.generation !== parts.generation) throw new NotNow('The inventory is changing.', 1);
  const before = machine;
  if (before && before.generation === inventory.generation && !main.classList.contains('is-stale') && before.generation !== null) return;
  machine = new Machine(inventory, parts, classes);
  const text = before && !before.isEmpty ? markChanges(before) : '';
  const isFirst = before === null;
  if (isFirst) show();
  await loadHistory();
  show({keepsPlace: true});
  if (text) news.textContent = text;
}

const pause = (seconds) => new Promise((done) => setTimeout(done, seconds * 1000));

// One after another; who hears of something meanwhile asks once more.
let wanted = 0, isBusy = false;
async function refreshSoon() {
  ++wanted;
  if (isBusy) return;
  isBusy = true;
  try {
    while (wanted > 0) {
      wanted = 0;
      await refresh();
    }
  } finally {
    isBusy = false;
  }
}

// Hears of news until the stream ends. Answers when to look again.
async function hear() {
  let failure = null;
  tell('live', 'is-live');
  listening = new AbortController();
  try {
    await listen((generation) => {
      if (generation !== machine?.generation) {
        refreshSoon().catch((error) => {
          failure = error;
          listening.abort();
        });
      }
    }, listening.signal);
  } catch (error) {
    if (failure === null && error instanceof NotNow && !error.isUnreachable) {
      tell(`looks again every ${plural(error.seconds, 'second')}`);
      return error.seconds;
    }
    if (error.name !== 'AbortError') throw error;
  }
  if (failure !== null) throw failure;
  return 1;
}

async function run() {
  if (isListening) return;
  isListening = true;
  for (;;) {
    try {
      await refreshSoon();
      await pause(await hear());
    } catch (error) {
      if (error instanceof LoginNeeded) break;
      const seconds = error instanceof NotNow ? error.seconds : 3;
      complain(error instanceof NotNow ? error.message : 'Something went wrong on this page.', seconds);
      await pause(seconds);
    }
  }
  isListening = false;
  askForLogin();
}

function complain(reason, seconds) {
  if (machine === null || machine.isEmpty) {
    showNote('The inventory cannot be read now', `${reason} This page tries again every ${plural(seconds, 'second')}.`);
    machine = null;
  } else {
    main.classList.add('is-stale');
  }
  tell(machine === null ? 'not readable' : `${reason} Shown is what was known last.`, 'is-lost');
}

function askForLogin() {
  machine = null;
  nav.hidden = true;
  logout.hidden = true;
  tell('');
  document.title = 'Log in';
  document.getElementById('title').textContent = 'Hardware inventory';
  main.replaceChildren(drawLogin(run));
}

logout.addEventListener('click', async () => {
  await logOut();
  listening?.abort();
});
addEventListener('hashchange', () => show({movesFocus: true}));
document.querySelector('.skip').addEventListener('click', (event) => {
  event.preventDefault();
  main.focus();
});
nav.hidden = true;
tell('reading…');
run();
