// The PCI Express tree: roots, switches, slots and what is in them, on links as thick as they run.
import {plural, svg, textWidth} from './dom.js';
import {box, Drawing, label, line, linkTo, stateOf} from './drawing.js';
import {reasonOf} from './machine.js';

const ROW = 40, BOX = 30, INDENT = 22, HEADER = 26, GAP = 28;
const STEP = 16;
const MOST_ROWS = 160, MOST_ALIKE = 4;

const deviceOf = (address) => address.replace(/\.[^.]*$/, '');
const isBridge = (part) => /bridge/i.test(part.values.ClassName ?? '') && !/host bridge|isa bridge/i.test(part.values.ClassName);

function widthOf(lanes) {
  return lanes >= 32 ? 12 : lanes >= 16 ? 9 : lanes >= 8 ? 6 : lanes >= 4 ? 4 : lanes >= 2 ? 2.8 : 1.8;
}

// What hangs below a function: devices, each with its functions; those that are alike and many as one.
function below(functions, children) {
  const devices = new Map();
  for (const each of functions) {
    const key = isBridge(each) ? each.values.Address : deviceOf(each.values.Address);
    if (!devices.has(key)) devices.set(key, []);
    devices.get(key).push(each);
  }
  const nodes = [...devices.values()].map((own) => ({functions: own, children: own.flatMap((each) => children.get(each.values.Address) ?? [])}));
  const alike = new Map();
  for (const node of nodes) {
    const {Id, Place, LinkState} = node.functions[0].values;
    const isFree = isBridge(node.functions[0]) && LinkState === 'down';
    node.isFree = isFree;
    const key = node.children.length > 0 ? {} : isFree ? 'free' : `${Id} ${Place}`;
    if (!alike.has(key)) alike.set(key, []);
    alike.get(key).push(node);
  }
  return [...alike.values()].flatMap((same) => {
    if (same.length <= MOST_ALIKE) return same;
    return [{functions: same.flatMap((node) => node.functions), children: [], isFree: same[0].isFree, isMany: true}];
  });
}

// A row of the drawing: the ports on the way, and what is at the end.
function rowsOf(node, children, depth) {
  const ports = [];
  let end = node;
  while (isBridge(end.functions[0]) && !end.isFree && !end.isMany) {
    const next = below(end.children, children);
    if (next.length !== 1 || next[0].isMany) break;
    ports.push(end.functions[0]);
    end = next[0];
  }
  const nested = end.isMany ? [] : below(end.children, children).flatMap((next) => rowsOf(next, children, depth + 1));
  return [{ports, end, depth, count: nested.filter((row) => row.depth === depth + 1).length}, ...nested];
}

// The machine's functions as groups of rows: by NUMA node, else by domain.
function groupsOf(machine) {
  const functions = machine.parts('functions');
  const addresses = new Set(functions.map((each) => each.values.Address));
  const children = new Map(), roots = [];
  for (const each of functions) {
    const bridge = each.values.Bridge;
    if (bridge === null || !addresses.has(bridge) || bridge === each.values.Address) roots.push(each);
    else if (children.has(bridge)) children.get(bridge).push(each);
    else children.set(bridge, [each]);
  }
  const nodes = new Set(functions.map((each) => each.values.NUMANode).filter((node) => node !== null));
  const domains = new Set(functions.map((each) => each.values.Address.split(':')[0]));
  const processors = machine.parts('processors').filter((each) => !each.isVacant);
  const nameOf = (each) => {
    if (nodes.size > 1) {
      const node = each.values.NUMANode;
      if (node === null) return 'No known node';
      return nodes.size === processors.length ? (processors[node]?.values.Socket ?? `Node ${node}`) : `Node ${node}`;
    }
    return domains.size > 1 ? `Domain ${each.values.Address.split(':')[0]}` : '';
  };
  const groups = new Map();
  for (const root of roots) {
    const name = nameOf(root);
    if (!groups.has(name)) groups.set(name, {name, roots: [], builtIn: []});
    const hasTree = isBridge(root) && ((children.get(root.values.Address)?.length ?? 0) > 0 || root.values.LinkState !== null);
    groups.get(name)[hasTree || root.values.Link !== null ? 'roots' : 'builtIn'].push(root);
  }
  const told = (each) => machine.at(each.values.Address, 'adapters').length > 0;
  return [...groups.values()].map(({name, roots: own, builtIn}) => {
    const shown = builtIn.filter(told), rest = builtIn.filter((each) => !told(each));
    const trees = below([...shown, ...own], {get: (address) => children.get(address)}).map((node) => rowsOf({...node}, children, 0));
    return {name, trees, rest};
  });
}

// What a link runs, and what it could: both ends of it told.
function linkOf(port, end) {
  const own = end.values, other = port?.values;
  const both = (field) => {
    const known = [own[field], other?.[field]].filter((value) => value > 0);
    return known.length > 0 ? Math.min(...known) : 0;
  };
  const lanes = own.LanesInUse || other?.LanesInUse || 0, generation = own.PCIeType || other?.PCIeType || 0;
  const isReduced = own.LinkState === 'reduced' || other?.LinkState === 'reduced';
  return {
    lanes, generation, isReduced,
    mostLanes: isReduced ? Math.max(lanes, both('MaxLanes')) : lanes,
    mostGeneration: isReduced ? Math.max(generation, both('MaxPCIeType')) : generation,
    isKnown: lanes > 0 && (own.Link !== null || (other?.Link ?? null) !== null),
  };
}

function textOfLink({lanes, generation, isReduced, mostLanes, mostGeneration}) {
  const runs = `x${lanes} gen${generation}`;
  return isReduced ? [runs, `of x${mostLanes} gen${mostGeneration}`] : [runs];
}

const plainName = (part) => String(part.values.DeviceName ?? part.values.Name ?? part.values.Id ?? '');
const placeText = (place) => (place && place !== 'on board' ? place : '');

function drawFree(row, x, y, width) {
  const [port] = row.end.functions, {MaxLanes, MaxPCIeType} = port.values;
  const could = MaxLanes ? `x${MaxLanes} gen${MaxPCIeType}` : '';
  const text = row.end.isMany ? `${row.end.functions.length} links with nothing plugged in` : ['nothing plugged in', could].filter(Boolean).join(' · ');
  const href = row.end.isMany ? '#/functions?search=pci%20bridge' : port.href;
  return linkTo(href, row.end.isMany ? text : `${port.values.Address}: ${text}`, stateOf(...row.end.functions),
                svg('rect', {x: x - 6, y, width: width + 6, height: BOX, class: 'hit', rx: 4}),
                line([[x, y + BOX / 2], [x + 14, y + BOX / 2]], 1.5, 'is-free'),
                svg('circle', {cx: x, cy: y + BOX / 2, r: 4, class: 'is-port'}),
                label(x + 22, y + BOX / 2 + 4, text, {room: width - 24, size: 12, kind: 'is-quiet'}));
}

// Lights of the device's ports, at its right edge.
function lightsOf(machine, functions) {
  const ports = functions.flatMap((each) => machine.at(each.values.Address, 'ports'));
  return ports.slice(0, 12);
}

function drawEnd(machine, row, x, y, width) {
  const {functions, isMany} = row.end, [first] = functions;
  const adapter = functions.flatMap((each) => machine.at(each.values.Address, 'adapters'))[0];
  const at = (name) => functions.flatMap((each) => machine.at(each.values.Address, name));
  const drives = at('drives'), drive = drives.length === 1 ? drives[0] : undefined;
  const ports = isMany ? [] : lightsOf(machine, functions);
  const isSwitch = row.count > 0 && isBridge(first);
  const place = placeText(first.values.Place);
  const updates = [...at('settings'), ...at('firmware'), ...(place ? machine.inPlace(place, 'pldm') : [])].filter((each) => each.isPending || each.level === 'warning');
  const name = isMany ? plainName(first) : drive?.values.Model ?? adapter?.values.CardName ?? plainName(first);
  const part = isMany ? null : drive ?? adapter ?? first;
  const related = [first, ...row.ports, adapter, ...drives, ...ports, ...updates].filter(Boolean);
  const hasWarning = related.some((each) => each.level === 'warning');
  const amount = isMany ? `${functions.length} ×` : '';
  const tail = drive?.values.Capacity ?? (drives.length > 1 ? plural(drives.length, 'drive') : isSwitch ? plural(row.count, 'link') : functions.length > 1 && ports.length === 0 && !isMany ? plural(functions.length, 'function') : '');
  const tailWidth = ports.length > 0 ? ports.length * 11 + 6 : tail ? textWidth(tail, 11.5, 500) + 12 : 0;
  const href = isMany ? `#/functions?search=${encodeURIComponent(first.values.Id ?? '')}` : part.href;
  const reasons = [...new Set(related.filter((each) => each.level === 'warning' || each.isPending).map(reasonOf))];
  const spoken = [place, amount + ' ' + name, tail, ports.length > 0 && `${ports.filter((port) => port.values.Link === 'up').length} of ${plural(ports.length, 'port')} up`,
                  row.link.isKnown && 'link ' + textOfLink(row.link).join(' '), ...reasons];
  const lead = place || amount;
  const leadWidth = lead ? textWidth(lead, 12, 650) + 8 : 0;
  const hasLead = leadWidth < (width - tailWidth) * 0.6;
  return linkTo(href, spoken.filter(Boolean).map((text) => text.trim()).join(', '), `${hasWarning ? 'is-warning' : ''} ${stateOf(...related)}`,
                box(x, y, width, BOX, isSwitch ? 'is-switch' : place ? 'is-card' : 'is-device', 4),
                hasLead && lead ? label(x + 9, y + 19.5, lead, {size: 12, weight: 650}) : [],
                label(x + 9 + (hasLead ? leadWidth : 0), y + 19.5, name, {room: width - 18 - (hasLead ? leadWidth : 0) - tailWidth, size: 12, kind: place ? '' : 'is-soft'}),
                ports.map((port, i) => svg('circle', {cx: x + width - 12 - (ports.length - 1 - i) * 11, cy: y + BOX / 2, r: 3.8,
                                                      class: port.values.Link === 'up' ? 'light is-up' : 'light is-down'})),
                ports.length === 0 && tail ? label(x + width - 9, y + 19.5, tail, {size: 11.5, weight: 500, kind: 'is-quiet', anchor: 'end'}) : []);
}

function drawLink(link, from, to, y) {
  const kind = link.isReduced ? 'is-reduced' : link.isKnown ? 'is-link' : 'is-unknown';
  return [
    link.isReduced ? line([[from, y], [to, y]], widthOf(link.mostLanes), 'is-possible') : [],
    line([[from, y], [to, y]], link.isKnown ? widthOf(link.lanes) : 1.5, kind),
  ];
}

function drawRow(machine, row, x, y, width) {
  const left = x + 8 + row.depth * INDENT, middle = y + ROW / 2 + 1, {ports, end} = row;
  const ways = [...ports, end.functions[0]].map((each, i) => linkOf(ports[i - 1] ?? null, each));
  row.link = ways.at(-1);
  const passed = Math.max(0, ports.length - 1) * STEP;
  const length = passed + (width < 420 ? 72 : 92);
  const start = left + passed, boxLeft = left + length, {mostLanes, isReduced, isKnown} = row.link;
  const texts = isKnown ? textOfLink(row.link) : [], half = widthOf(mostLanes) / 2, centre = (start + boxLeft) / 2 + 3;
  if (end.isFree) return [ports.length > 0 ? line([[left, middle], [start + STEP, middle]], 1.5, 'is-unknown') : [], drawPorts(ports, left, middle),
                          drawFree(row, start + (ports.length > 0 ? STEP : 0), y + (ROW - BOX) / 2 + 1, width - (start - x) - (ports.length > 0 ? STEP : 0))];
  return [
    ways.slice(1, -1).map((link, i) => drawLink(link, left + i * STEP, left + (i + 1) * STEP, middle)),
    drawLink(row.link, start, boxLeft, middle),
    drawPorts(ports, left, middle),
    texts.length > 0 ? label(centre, middle - half - 3.5, texts[0], {size: 10.5, weight: isReduced ? 650 : 500, anchor: 'middle', kind: isReduced ? 'is-loud' : 'is-quiet', room: boxLeft - start - 10}) : [],
    texts.length > 1 ? label(centre, middle + half + 10, texts[1], {size: 10.5, weight: 500, anchor: 'middle', kind: 'is-loud', room: boxLeft - start - 8}) : [],
    drawEnd(machine, row, boxLeft, y + (ROW - BOX) / 2 + 1, width - (boxLeft - x)),
  ];
}

function drawPorts(ports, left, y) {
  return ports.map((port, i) => linkTo(port.href, `Port ${port.values.Address}, ${plainName(port)}`, stateOf(port),
                                       svg('circle', {cx: left + i * STEP, cy: y, r: 8, class: 'hit'}),
                                       svg('circle', {cx: left + i * STEP, cy: y, r: 4, class: 'is-port'})));
}

// The line that the rows of a tree hang on.
function spines(rows, x, y) {
  const lines = [];
  rows.forEach((row, i) => {
    if (row.count === 0) return;
    let last = i;
    for (let j = i + 1; j < rows.length && rows[j].depth > row.depth; ++j) {
      if (rows[j].depth === row.depth + 1) last = j;
    }
    const left = x + 8 + (row.depth + 1) * INDENT;
    lines.push(line([[left, y + i * ROW + ROW / 2 + BOX / 2], [left, y + last * ROW + ROW / 2 + 1]], 2, 'is-spine'));
  });
  return lines;
}

// Groups as pieces that stand in one column: a header and some trees.
function pieces(groups) {
  let left = MOST_ROWS;
  return groups.flatMap((group) => {
    const list = [];
    group.trees.forEach((tree, i) => {
      if (left <= 0) return;
      const rows = tree.slice(0, left);
      left -= rows.length;
      list.push({header: i === 0 ? group.name : '', rows, height: rows.length * ROW + (i === 0 && group.name ? HEADER : 0)});
    });
    if (group.rest.length > 0) {
      const header = list.length === 0 ? group.name : '';
      list.push({header, rows: [], rest: group.rest, height: ROW + (header ? HEADER : 0)});
    }
    return list;
  });
}

function drawPiece(machine, piece, x, y, width, goesOn) {
  const children = [];
  let top = y;
  if (piece.header) {
    children.push(label(x, top + 15, piece.header, {size: 12, weight: 650, room: width}),
                  line([[x + textWidth(piece.header, 12, 650) + 10, top + 11], [x + width, top + 11]], 1, 'is-rule'));
    top += HEADER;
  }
  // What the roots hang on.
  const last = piece.rest ? 18 : (piece.rows.findLastIndex((row) => row.depth === 0) + 0.5) * ROW + 1;
  children.push(line([[x + 8, top], [x + 8, goesOn ? y + piece.height : top + last]], 2, 'is-spine'));
  children.push(spines(piece.rows, x, top));
  piece.rows.forEach((row, i) => children.push(drawRow(machine, row, x, top + i * ROW, width)));
  if (piece.rest) {
    const text = `${plural(piece.rest.length, 'function')} built in`;
    const search = encodeURIComponent(deviceOf(piece.rest[0].values.Address).replace(/:[^:]*$/, ':'));
    const href = piece.rest.length === 1 ? piece.rest[0].href : `#/functions${piece.rest.every((each) => each.values.Address.startsWith(decodeURIComponent(search))) ? `?search=${search}` : ''}`;
    children.push(linkTo(href, text, stateOf(...piece.rest), svg('rect', {x, y: top, width, height: ROW - 8, class: 'hit'}),
                         svg('circle', {cx: x + 8, cy: top + 18, r: 3, class: 'is-port'}),
                         label(x + 22, top + 22, text, {size: 12, kind: 'is-quiet', room: width - 22})));
  }
  return children;
}

export function drawTree(machine) {
  const functions = machine.parts('functions');
  if (functions.length === 0) return null;
  const groups = groupsOf(machine);
  const list = pieces(groups);
  const total = list.reduce((sum, piece) => sum + piece.height, 0);
  const rows = groups.reduce((sum, group) => sum + group.trees.reduce((own, tree) => own + tree.length, 0), 0);
  const note = plural(functions.length, 'function') + (rows > MOST_ROWS ? `, of ${rows} devices ${MOST_ROWS} are drawn` : '');
  return new Drawing().setUp('PCI Express', note, (width) => {
    const columns = Math.min(4, list.length, Math.max(1, Math.floor((width + GAP) / (350 + GAP))));
    const each = (width - (columns - 1) * GAP) / columns;
    const places = [];
    let column = 0, y = 0, tallest = 0, done = 0;
    list.forEach((piece, i) => {
      // The next column begins where this one has its share, rather before a header than amid a group.
      const share = (total * (column + 1)) / columns;
      const isHeader = piece.header !== '' && done > share - total / columns / 4;
      if (i > 0 && y > 0 && column < columns - 1 && !(piece.rest && piece.header === '') && (done + piece.height / 2 > share || isHeader)) {
        ++column;
        y = 0;
      }
      if (y > 0 && piece.header) y += 12;
      places.push({piece, column, y});
      y += piece.height;
      done += piece.height;
      tallest = Math.max(tallest, y);
    });
    const children = places.map(({piece, column: own, y: top}, i) => {
      const next = places[i + 1];
      return drawPiece(machine, piece, own * (each + GAP), top, each, next !== undefined && next.column === own && next.piece.header === '');
    });
    return {height: tallest + 4, children};
  });
}
