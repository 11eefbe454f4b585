// What the drawings share: text that fits, parts as links, and arrow keys among them.
import {fitted, html, svg} from './dom.js';
import {reasonOf} from './machine.js';

// Texts that may be cut are for the eye; links are called by all that they tell.
export function label(x, y, text, {room = Infinity, size = 12, weight = 400, kind = '', anchor = 'start'} = {}) {
  return svg('text', {x, y, class: 'label ' + kind, 'aria-hidden': 'true', 'font-size': size, 'font-weight': weight, 'text-anchor': anchor},
             fitted(text, room, size, weight));
}

export function box(x, y, width, height, kind = '', radius = 4) {
  return svg('rect', {x, y, width, height, rx: radius, class: 'box ' + kind});
}

export function line(points, width, kind = '') {
  return svg('path', {d: 'M' + points.map((point) => point.join(' ')).join('L'), class: 'line ' + kind, 'stroke-width': width});
}

// What belongs to a part, as one link to it. The title is its name, for the pointer and for those who listen.
export function linkTo(href, name, state, ...children) {
  return svg('a', {href, class: 'item ' + state}, svg('title', {}, name), children);
}

export function stateOf(...parts) {
  const states = [];
  if (parts.some((part) => part?.level === 'warning')) states.push('is-warning');
  if (parts.some((part) => part?.isPending)) states.push('is-pending');
  return states.join(' ');
}

export function partLink(part, description, ...children) {
  const reason = reasonOf(part);
  return linkTo(part.href, [part.name, description, reason].filter(Boolean).join(', '), stateOf(part), ...children);
}

// One stop for the Tab key; from there the arrow keys go to what is nearest.
export function rove(drawing) {
  const items = [...drawing.querySelectorAll('a.item')];
  items.forEach((item, i) => item.setAttribute('tabindex', i === 0 ? 0 : -1));
  drawing.addEventListener('focusin', (event) => {
    const item = event.target.closest('a.item');
    if (!item) return;
    for (const each of items) each.setAttribute('tabindex', each === item ? 0 : -1);
  });
  drawing.addEventListener('keydown', (event) => {
    const step = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1]}[event.key];
    const from = event.target.closest('a.item');
    if (!from || (!step && event.key !== 'Home' && event.key !== 'End')) return;
    event.preventDefault();
    const to = event.key === 'Home' ? items[0] : event.key === 'End' ? items.at(-1) : nearest(items, from, step);
    to?.focus();
  });
}

function nearest(items, from, [dx, dy]) {
  const centre = (item) => {
    const place = item.getBoundingClientRect();
    return [place.x + place.width / 2, place.y + place.height / 2];
  };
  const [x, y] = centre(from);
  let best = null, least = Infinity;
  for (const item of items) {
    const [itsX, itsY] = centre(item);
    const along = (itsX - x) * dx + (itsY - y) * dy;
    const aside = Math.abs((itsX - x) * dy) + Math.abs((itsY - y) * dx);
    if (along > 1 && along + aside * 3 < least) {
      least = along + aside * 3;
      best = item;
    }
  }
  return best;
}

// A drawing that is made for the width that it has, and again for another.
export class Drawing extends HTMLElement {
  #width = 0;
  #observer = new ResizeObserver(() => this.#drawIfWider());

  // `draw` makes the content for a width: {height, children}.
  setUp(heading, note, draw) {
    this.draw = draw;
    this.frame = html('div', {class: 'drawing'});
    this.append(html('h2', {}, heading, html('span', {class: 'note'}, note)), this.frame);
    this.name = heading;
    return this;
  }

  connectedCallback() {
    this.#observer.observe(this.frame);
    this.#drawIfWider();
  }

  disconnectedCallback() {
    this.#observer.disconnect();
  }

  #drawIfWider() {
    // Drawings grow with the letters around them.
    const scale = parseFloat(getComputedStyle(document.documentElement).fontSize) / 14;
    const width = Math.floor(this.frame.clientWidth / scale);
    if (width <= 0 || width === this.#width) return;
    this.#width = width;
    const hadFocus = document.activeElement?.closest?.('a.item');
    const href = hadFocus && this.contains(hadFocus) ? hadFocus.getAttribute('href') : null;
    const {height, children} = this.draw(width);
    const drawing = svg('svg', {viewBox: `0 0 ${width} ${Math.ceil(height)}`, role: 'group',
                                'aria-label': `${this.name}: arrow keys go from part to part`}, children);
    this.frame.replaceChildren(drawing);
    rove(drawing);
    if (href) [...drawing.querySelectorAll('a.item')].find((item) => item.getAttribute('href') === href)?.focus();
    this.dispatchEvent(new CustomEvent('drawn', {bubbles: true}));
  }
}
customElements.define('machine-drawing', Drawing);
