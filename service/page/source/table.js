// All parts of a class: searched, sorted, with the columns that were chosen.
import {choices, html, plural} from './dom.js';
import {textOf} from './machine.js';

const SLICE = 150;

function compare(a, b) {
  if (a === b) return 0;
  if (a === null || a === undefined || a === '') return 1;
  if (b === null || b === undefined || b === '') return -1;
  if (typeof a === 'number' && typeof b === 'number') return a - b;
  return collator.compare(String(a), String(b));
}
const collator = new Intl.Collator('en', {numeric: true});

class InventoryTable extends HTMLElement {
  #shown = 0;
  #rows = [];
  #observer = null;
  #beforePrint = () => this.#addRows(Infinity);

  setUp(of, search, isOnly) {
    this.of = of;
    this.columns = new Set(choices.get(`columns.${of.name}`, null) ?? of.fields.filter((field) => field.is_shown).map((field) => field.key));
    this.sort = choices.get(`sort.${of.name}`, null);
    this.search = html('input', {type: 'search', id: 'search', value: search, placeholder: 'Search', autocomplete: 'off', spellcheck: 'false',
                                 'aria-label': `Search ${of.name}`, oninput: () => this.#arrange()});
    this.only = html('input', {type: 'checkbox', id: 'only', checked: isOnly, onchange: () => this.#arrange()});
    this.count = html('span', {class: 'count', role: 'status'});
    this.head = html('tr');
    this.body = html('tbody');
    this.more = html('div', {class: 'more'});
    this.scroll = html('div', {class: 'scroll', tabindex: '0', role: 'region', 'aria-label': `Table of ${of.name}`},
                       html('table', {}, html('caption', {class: 'hidden'}, of.description), html('thead', {}, this.head), this.body), this.more);
    const needsALook = of.parts.some((part) => part.level !== '' || part.isPending);
    this.append(html('div', {class: 'controls'}, this.search, needsALook && html('label', {class: 'check'}, this.only, ' Only what deserves a look'),
                     this.#chooser(), this.count), this.scroll);
    this.body.addEventListener('click', (event) => {
      const row = event.target.closest('tr');
      if (row && !event.target.closest('a') && getSelection().isCollapsed) location.hash = row.dataset.href;
    });
    this.#makeHead();
    this.#arrange();
    return this;
  }

  // As it was before it was drawn again.
  restore({search, only, top, left}) {
    this.search.value = search;
    this.only.checked = only;
    this.#arrange();
    while (this.scroll.scrollHeight < top + this.scroll.clientHeight && this.#shown < this.#rows.length) this.#addRows(SLICE);
    this.scroll.scrollTo(left, top);
  }

  connectedCallback() {
    this.#observer = new IntersectionObserver((seen) => {
      if (seen.some((each) => each.isIntersecting)) this.#addRows(SLICE);
    }, {root: this.scroll, rootMargin: '600px'});
    this.#observer.observe(this.more);
    addEventListener('beforeprint', this.#beforePrint);
  }

  disconnectedCallback() {
    this.#observer.disconnect();
    removeEventListener('beforeprint', this.#beforePrint);
  }

  #fields() {
    return this.of.fields.filter((field) => this.columns.has(field.key));
  }

  #chooser() {
    const standard = this.of.fields.filter((field) => field.is_shown).map((field) => field.key);
    const list = html('ul');
    const make = () => list.replaceChildren(...this.of.fields.map((field) => html('li', {}, html('label', {class: 'check'},
        html('input', {type: 'checkbox', checked: this.columns.has(field.key), onchange: (event) => {
          this.columns[event.target.checked ? 'add' : 'delete'](field.key);
          this.#chosen([...this.columns]);
        }}),
        html('span', {}, html('b', {}, field.heading), ' ', field.meaning)))));
    make();
    const reset = html('button', {type: 'button', onclick: () => {
      this.columns = new Set(standard);
      this.#chosen(null);
      make();
    }}, 'As at the beginning');
    const chooser = html('details', {class: 'chooser', onkeydown: (event) => {
      if (event.key !== 'Escape' || !chooser.open) return;
      chooser.open = false;
      chooser.querySelector('summary').focus();
    }}, html('summary', {}, 'Columns'), html('div', {class: 'popup'}, list, reset));
    return chooser;
  }

  #chosen(columns) {
    choices.set(`columns.${this.of.name}`, columns);
    this.#makeHead();
    this.#arrange();
  }

  #makeHead() {
    this.head.replaceChildren(html('th', {scope: 'col', class: 'mark'}, html('span', {class: 'hidden'}, 'Part')), ...this.#fields().map((field) => {
      const direction = this.sort?.key === field.key ? this.sort.direction : null;
      return html('th', {scope: 'col', class: field.kind === 'number' ? 'number' : null, 'aria-sort': direction},
                  html('button', {type: 'button', title: [field.meaning, field.unit && `in ${field.unit}`].filter(Boolean).join(', '),
                                  onclick: () => this.#sortBy(field.key)}, field.heading));
    }));
  }

  #sortBy(key) {
    const isSame = this.sort?.key === key;
    if (isSame && this.sort.direction === 'descending') this.sort = null;
    else this.sort = {key, direction: isSame ? 'descending' : 'ascending'};
    choices.set(`sort.${this.of.name}`, this.sort);
    this.#makeHead();
    [...this.head.querySelectorAll('button')][this.#fields().findIndex((field) => field.key === key)]?.focus();
    this.#arrange();
  }

  #arrange() {
    const words = this.search.value.toLowerCase().split(/\s+/).filter(Boolean);
    let rows = this.of.parts.filter((part) => part.matches(words) && (!this.only.checked || part.level !== '' || part.isPending));
    if (this.sort) {
      const {key, direction} = this.sort, sign = direction === 'ascending' ? 1 : -1;
      const isUnknown = (part) => part.values[key] === null || part.values[key] === undefined;
      rows = [...rows].sort((a, b) => (isUnknown(a) || isUnknown(b) ? 1 : sign) * compare(a.values[key], b.values[key]));
    }
    this.#rows = rows;
    this.#shown = 0;
    this.body.replaceChildren();
    this.count.textContent = rows.length === this.of.parts.length ? plural(rows.length, 'part') :
        `${rows.length.toLocaleString('en')} of ${plural(this.of.parts.length, 'part')}`;
    this.#addRows(SLICE);
  }

  // As many as there is a look at; the rest follows when somebody comes near.
  #addRows(most) {
    const fields = this.#fields();
    const next = this.#rows.slice(this.#shown, this.#shown + most);
    this.#shown += next.length;
    this.body.append(...next.map((part) => this.#row(part, fields)));
    this.more.hidden = this.#shown >= this.#rows.length;
    if (this.#observer && !this.more.hidden) {
      this.#observer.unobserve(this.more);
      this.#observer.observe(this.more);
    }
    if (next.length > 0) this.dispatchEvent(new CustomEvent('drawn', {bubbles: true}));
  }

  #row(part, fields) {
    const level = part.level || (part.isPending ? 'pending' : '');
    const signs = {warning: ['!', 'warning'], absent: ['–', 'not there'], pending: ['…', 'pending']};
    const sign = signs[level] ?? ['', ''];
    const row = html('tr', {'data-href': part.href, class: part.isVacant ? 'is-vacant' : null},
                     html('td', {class: 'mark'}, level && html('span', {class: `sign is-${level}`, title: sign[1]}, html('span', {'aria-hidden': 'true'}, sign[0]),
                                                               html('span', {class: 'hidden'}, sign[1]))),
                     fields.map((field, i) => this.#cell(part, field, i === 0)));
    if (fields.length === 0) row.append(html('th', {scope: 'row'}, html('a', {href: part.href}, part.name)));
    return row;
  }

  #cell(part, field, isFirst) {
    const text = textOf(field, part.values[field.key]);
    const attention = part.attention[field.key];
    const kind = [field.kind === 'number' && 'number', field.kind === 'long text' && 'long', attention && `is-${attention}`, field.role === 'identity' && 'code'].filter(Boolean).join(' ') || null;
    if (isFirst) return html('th', {scope: 'row', class: kind}, html('a', {href: part.href}, text || part.name));
    const value = text && field.unit && field.is_amount && field.unit.length < 3 && !field.heading.endsWith('%') ? `${text} ${field.unit}` : text;
    return html('td', {class: kind}, value);
  }
}
customElements.define('inventory-table', InventoryTable);

export function drawTable(of, search, isOnly) {
  return new InventoryTable().setUp(of, search, isOnly);
}
