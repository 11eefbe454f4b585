// Drives in their bays and slots.
import {plural, svg} from './dom.js';
import {box, Drawing, label, partLink} from './drawing.js';

const WIDTH = 148, HEIGHT = 92, GAP = 8;
const BAY = 2;
const MOST_GAPS = 32;

// The drives, with the bays between them that nothing is known of.
function sledsOf(drives) {
  const sleds = [];
  const inBays = drives.filter((drive) => drive.values.LocationId === BAY && drive.values.BayNo !== null)
                     .sort((a, b) => a.values.BayNo - b.values.BayNo);
  let next = inBays[0]?.values.BayNo <= 1 ? inBays[0]?.values.BayNo : 1;
  for (const drive of inBays) {
    const number = drive.values.BayNo;
    if (number - next <= MOST_GAPS) {
      for (; next < number; ++next) sleds.push({number: next});
    }
    next = number + 1;
    sleds.push({drive});
  }
  return [...sleds, ...drives.filter((drive) => !inBays.includes(drive)).map((drive) => ({drive}))];
}

function drawSled(drive, x, y, width) {
  const {Capacity, Model, DisplayType, MediaType, Location, RemainLife, Temperature} = drive.values;
  const type = [...new Set([DisplayType, MediaType])].filter(Boolean).join(' ');
  const state = [Temperature != null && `${Temperature} °C`, RemainLife != null && `${RemainLife} % left`].filter(Boolean).join(', ');
  return partLink(drive, [Capacity, type, Model, state].filter(Boolean).join(', '),
                  box(x, y, width, HEIGHT, 'is-card', 5),
                  svg('rect', {x: x + 1, y: y + 1, width: 5, height: HEIGHT - 2, rx: 2.5, class: 'is-handle'}),
                  label(x + 15, y + 20, Location ?? drive.place ?? drive.name, {room: width - 40, size: 12, weight: 650}),
                  svg('circle', {cx: x + width - 14, cy: y + 15.5, r: 4, class: drive.level === 'warning' ? 'light is-failed' : 'light is-up'}),
                  label(x + 15, y + 45, Capacity ?? type, {room: width - 26, size: 19, weight: 600}),
                  label(x + 15, y + 63, [Capacity ? type : '', Temperature != null && `${Temperature} °C`].filter(Boolean).join(' · '), {room: width - 26, size: 12, kind: 'is-quiet'}),
                  label(x + 15, y + 80, Model, {room: width - 26, size: 11, kind: 'is-quiet'}),
                  RemainLife == null ? [] : [
                    svg('rect', {x: x + 6, y: y + HEIGHT - 4, width: width - 12, height: 2, class: 'is-track'}),
                    svg('rect', {x: x + 6, y: y + HEIGHT - 4, width: (width - 12) * Math.min(100, RemainLife) / 100, height: 2, class: RemainLife <= 10 ? 'is-bar is-low' : 'is-bar'}),
                  ]);
}

export function drawBays(machine) {
  const drives = machine.parts('drives');
  if (drives.length === 0) return null;
  const sleds = sledsOf(drives);
  return new Drawing().setUp('Drives', plural(drives.length, 'drive'), (width) => {
    const columns = Math.max(1, Math.min(sleds.length, Math.floor((width + GAP) / (WIDTH + GAP))), width >= 280 ? 2 : 1);
    const each = Math.min(columns > 2 ? 210 : 999, (width - (columns - 1) * GAP) / columns);
    const children = sleds.map(({drive, number}, i) => {
      const x = (i % columns) * (each + GAP), y = Math.floor(i / columns) * (HEIGHT + GAP);
      if (drive) return drawSled(drive, x, y, each);
      return svg('g', {}, box(x, y, each, HEIGHT, 'is-empty', 5), label(x + 15, y + 20, `Bay ${number}`, {size: 12, kind: 'is-quiet'}),
                 label(x + 15, y + 45, 'no drive', {size: 12, kind: 'is-quiet'}));
    });
    return {height: Math.ceil(sleds.length / columns) * (HEIGHT + GAP) - GAP + 2, children};
  });
}
