// What became of the machine's parts.
import {html, plural} from './dom.js';

const VERBS = {added: 'added', removed: 'removed', moved: 'moved', replaced: 'replaced', changed: 'changed'};

export function changesOf(history, part) {
  return history.changes.filter((change) => change.class === part.of.name && (change.place === part.place || change.former_place === part.place));
}

// "3 minutes ago", and the time itself where that says more.
export function ago(time) {
  const seconds = Math.max(0, (Date.now() - Date.parse(time.replace(' ', 'T') + 'Z')) / 1000);
  for (const [length, unit] of [[86400, 'day'], [3600, 'hour'], [60, 'minute']]) {
    if (seconds >= length) return `${plural(Math.floor(seconds / length), unit)} ago`;
  }
  return 'just now';
}

function partOf(machine, change) {
  return machine.parts(change.class).find((part) => part.place === change.place);
}

function drawChange(machine, change) {
  if (change.change === 'baseline') return html('li', {}, html('span', {class: 'verb'}, 'first collected'), ' ', plural(change.parts, 'part'));
  if (change.change === 'more') return html('li', {}, html('span', {class: 'verb'}, 'and'), ` ${plural(change.parts, 'part')} more`);
  const part = change.change === 'removed' ? null : partOf(machine, change);
  const place = change.where || change.place || change.description || change.class;
  const texts = [change.what ?? ''];
  return html('li', {}, html('span', {class: `verb is-${change.change}`}, VERBS[change.change] ?? change.change), ' ',
              html('span', {class: 'class'}, change.class), ' ', part ? html('a', {href: part.href}, place) : html('b', {}, place),
              texts.filter((text) => text && text !== place).map((text) => html('span', {class: 'what'}, text)));
}

export function drawChanges(machine, changes, error, otherwise, most = Infinity) {
  if (error && changes.length === 0) return html('p', {class: 'quiet'}, `The history cannot be told now: ${error}`);
  if (changes.length === 0) return html('p', {class: 'quiet'}, otherwise);
  const moments = new Map();
  for (const change of changes.slice(0, most)) {
    if (!moments.has(change.generation)) moments.set(change.generation, []);
    moments.get(change.generation).push(change);
  }
  return html('ol', {class: 'changes'}, [...moments.values()].map((list) => html('li', {},
      html('p', {class: 'moment'}, html('time', {datetime: list[0].time.replace(' ', 'T') + 'Z', title: `${list[0].time} UTC, generation ${list[0].generation}`}, ago(list[0].time)),
           html('span', {class: 'exact'}, `${list[0].time} UTC`)),
      html('ul', {}, list.map((change) => drawChange(machine, change))))));
}

export function drawHistory(machine, history) {
  return html('article', {}, html('p', {class: 'crumb'}, html('a', {href: '#/'}, 'Machine')), html('h1', {}, 'Changes'),
              html('section', {class: 'panel'}, drawChanges(machine, history.changes, history.error, 'Nothing has changed yet.')));
}
