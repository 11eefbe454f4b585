// Elements, made one by one: whatever a device calls itself is text, and never markup.

const SVG = 'http://www.w3.org/2000/svg';

function fill(element, attributes, children) {
  for (const [name, value] of Object.entries(attributes)) {
    if (value === undefined || value === null || value === false) continue;
    if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
    else element.setAttribute(name, value === true ? '' : value);
  }
  for (const child of children.flat(Infinity)) {
    if (child !== undefined && child !== null && child !== false) element.append(child);
  }
  return element;
}

export function html(name, attributes = {}, ...children) {
  return fill(document.createElement(name), attributes, children);
}

export function svg(name, attributes = {}, ...children) {
  return fill(document.createElementNS(SVG, name), attributes, children);
}

export function plural(number, one, many = one + 's') {
  return `${number.toLocaleString('en')} ${number === 1 ? one : many}`;
}

// What people chose, kept where the browser allows it.
export const choices = {
  get(name, otherwise) {
    try {
      return JSON.parse(localStorage.getItem('zymdb.' + name)) ?? otherwise;
    } catch {
      return otherwise;
    }
  },
  set(name, value) {
    try {
      localStorage.setItem('zymdb.' + name, JSON.stringify(value));
    } catch {
      // Then it holds until the page is left.
    }
  },
};

let pen = null;
const widths = new Map();

// How wide a text is, in the page's own font.
export function textWidth(text, size = 12, weight = 400) {
  pen ??= document.createElement('canvas').getContext('2d');
  const key = `${weight} ${size} ${text}`;
  let width = widths.get(key);
  if (width === undefined) {
    if (widths.size > 5000) widths.clear();
    pen.font = `${weight} ${size}px ${getComputedStyle(document.body).fontFamily}`;
    width = pen.measureText(text).width;
    widths.set(key, width);
  }
  return width;
}

// The text, or as much of it as has room.
export function fitted(text, room, size = 12, weight = 400) {
  text = String(text ?? '');
  if (textWidth(text, size, weight) <= room) return text;
  const letters = Array.from(text);
  let low = 0, high = letters.length;
  while (low < high) {
    const middle = (low + high + 1) >> 1;
    if (textWidth(letters.slice(0, middle).join('') + '…', size, weight) <= room) low = middle;
    else high = middle - 1;
  }
  return low === 0 ? '' : letters.slice(0, low).join('').trimEnd() + '…';
}
