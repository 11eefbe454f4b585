// Faceplates with their ports and lights.
import {fitted, plural, svg, textWidth} from './dom.js';
import {box, Drawing, label, partLink} from './drawing.js';

const JACK = 104, HEIGHT = 46, GAP = 6, PAD = 10, HEADER = 28, BETWEEN = 12;

const placeWidth = (place, room) => textWidth(fitted(place, room, 12, 650), 12, 650);

function platesOf(machine) {
  const plates = new Map();
  for (const port of machine.parts('ports')) {
    const address = port.values.Function ?? '';
    const device = address.replace(/\.[^.]*$/, '');
    if (!plates.has(device)) {
      const adapter = machine.at(`${device}.0`, 'adapters')[0];
      const own = machine.at(address, 'functions')[0];
      const place = adapter?.values.Place ?? own?.values.Place ?? '';
      plates.set(device, {place: place || device, name: adapter?.values.CardName ?? own?.values.DeviceName ?? '', ports: []});
    }
    plates.get(device).ports.push(port);
  }
  return [...plates.values()];
}

function drawJack(port, x, y, width) {
  const {InterfaceName, Link, LinkSpeedText, ConnectorLayoutName, Idx, PermanentAddress} = port.values;
  const isUp = Link === 'up';
  const state = isUp ? LinkSpeedText ?? 'up' : Link ?? 'not known';
  return partLink(port, [Link, LinkSpeedText, ConnectorLayoutName, PermanentAddress].filter(Boolean).join(', '),
                  box(x, y, width, HEIGHT, isUp ? 'is-jack is-up' : 'is-jack', 4),
                  svg('circle', {cx: x + 14, cy: y + 16, r: 4.5, class: isUp ? 'light is-up' : Link === 'down' ? 'light is-down' : 'light'}),
                  label(x + 26, y + 20, InterfaceName ?? `port ${Idx}`, {room: width - 32, size: 12, weight: 600}),
                  label(x + 26, y + 36, state, {room: width - 32, size: 11.5, kind: 'is-quiet'}));
}

function drawPlate({plate, columns}, x, y, width, height) {
  const lead = placeWidth(plate.place, width / 2) + 8;
  const jack = (width - 2 * PAD - (columns - 1) * GAP) / columns;
  return [
    box(x, y, width, height, 'is-plate', 6),
    label(x + PAD, y + 19, plate.place, {size: 12, weight: 650, room: width / 2}),
    label(x + PAD + lead, y + 19, plate.name, {size: 12, kind: 'is-quiet', room: width - 2 * PAD - lead}),
    plate.ports.map((port, i) => drawJack(port, x + PAD + (i % columns) * (jack + GAP), y + HEADER + Math.floor(i / columns) * (HEIGHT + GAP), jack)),
  ];
}

export function drawPorts(machine) {
  const plates = platesOf(machine);
  if (plates.length === 0) return null;
  const ports = machine.parts('ports');
  const up = ports.filter((port) => port.values.Link === 'up').length;
  return new Drawing().setUp('Network ports', `${up} of ${plural(ports.length, 'port')} up`, (width) => {
    const most = Math.max(1, Math.floor((width - 2 * PAD + GAP) / (JACK + GAP)));
    const measured = plates.map((plate) => {
      const columns = Math.min(most, Math.max(plate.ports.length, Math.min(most, 2)));
      const rows = Math.ceil(plate.ports.length / columns);
      return {plate, columns, width: Math.min(width, columns * (JACK + GAP) - GAP + 2 * PAD), height: HEADER + rows * (HEIGHT + GAP) - GAP + PAD};
    });
    const children = [];
    let y = 0;
    for (let i = 0; i < measured.length;) {
      // As many as there is room for; they share what is left of it.
      let end = i + 1, used = measured[i].width;
      while (end < measured.length && used + BETWEEN + measured[end].width <= width) used += BETWEEN + measured[end++].width;
      const row = measured.slice(i, end);
      const jacks = row.reduce((sum, each) => sum + each.columns, 0);
      const height = Math.max(...row.map((each) => each.height));
      const extra = Math.min((width - used) / jacks, 120);
      let x = 0;
      for (const each of row) {
        const own = each.width + extra * each.columns;
        children.push(drawPlate(each, x, y, own, height));
        x += own + BETWEEN;
      }
      y += height + BETWEEN;
      i = end;
    }
    return {height: y - BETWEEN + 2, children};
  });
}
