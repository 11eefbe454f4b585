// One part: all its fields, what belongs to it, and what became of it.
import {choices, html, plural} from './dom.js';
import {reasonOf, textOf} from './machine.js';
import {changesOf, drawChanges} from './changes.js';

const GROUPS = [
  ['What it is', ['model', 'identity', 'version', 'stable']],
  ['How it is', ['state', 'volatile']],
  ['Where it is', ['place']],
  ['In the inventory', ['row']],
];

function drawField(part, field) {
  const value = part.values[field.key], text = textOf(field, value), attention = part.attention[field.key];
  const unit = field.unit && field.is_amount && text ? ` ${field.unit}` : '';
  return html('div', {class: 'field' + (text ? '' : ' is-unknown')},
              html('dt', {}, field.heading, html('span', {class: 'meaning'}, field.meaning)),
              html('dd', {class: attention ? `is-${attention}` : null}, text ? text + unit : 'not known'));
}

export function drawPart(machine, part, history) {
  const unknown = part.of.fields.filter((field) => textOf(field, part.values[field.key]) === '').length;
  const reason = reasonOf(part);
  const related = machine.related(part);
  const view = html('article', {class: 'part'});
  const all = html('input', {type: 'checkbox', checked: choices.get('unknown', false), onchange: (event) => {
    choices.set('unknown', event.target.checked);
    view.classList.toggle('has-unknown', event.target.checked);
  }});
  view.classList.toggle('has-unknown', all.checked);

  const groups = GROUPS.map(([name, roles]) => {
    // What tables show first; codes and the like after it.
    const own = part.of.fields.filter((field) => roles.includes(field.role));
    const fields = [...own.filter((field) => field.is_shown), ...own.filter((field) => !field.is_shown)];
    if (fields.length === 0) return null;
    const isKnown = fields.some((field) => textOf(field, part.values[field.key]) !== '');
    return html('section', {class: 'panel group' + (isKnown ? '' : ' is-unknown')}, html('h2', {}, name),
                html('dl', {}, fields.map((field) => drawField(part, field))));
  });
  const byClass = Map.groupBy ? Map.groupBy(related, (each) => each.of.name) : related.reduce((found, each) => found.set(each.of.name, [...(found.get(each.of.name) ?? []), each]), new Map());
  view.append(...[
    html('p', {class: 'crumb'}, html('a', {href: '#/'}, 'Machine'), ' / ', html('a', {href: `#/${part.of.name}`}, part.of.name)),
    html('h1', {}, part.name),
    part.model && part.model !== part.name && html('p', {class: 'lead'}, part.model),
    reason && html('p', {class: `reason is-${part.level || 'pending'}`}, reason),
    unknown > 0 && html('label', {class: 'check'}, all, ` Show the ${plural(unknown, 'field')} that nobody knows`),
    html('div', {class: 'columns'}, html('div', {class: 'groups'}, groups),
         html('div', {class: 'aside'},
              related.length > 0 && html('section', {class: 'panel'}, html('h2', {}, 'Belongs to it'),
                                         [...byClass].map(([name, parts]) => [html('h3', {}, name), html('ul', {class: 'list'}, parts.slice(0, 24).map((each) =>
                                             html('li', {}, html('a', {href: each.href}, html('b', {}, each.name), each.model && each.model !== each.name && html('span', {}, each.model)))))])),
              html('section', {class: 'panel'}, html('h2', {}, 'What became of it'), drawChanges(machine, changesOf(history, part), history.error, 'No change of it is on record.')))),
  ].filter(Boolean));
  return view;
}
