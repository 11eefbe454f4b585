// The machine at a glance.
import {html, plural} from './dom.js';
import {reasonOf} from './machine.js';
import {drawBoard, shortModel} from './draw-board.js';
import {drawTree} from './draw-tree.js';
import {drawBays} from './draw-bays.js';
import {drawPorts} from './draw-ports.js';
import {drawChanges} from './changes.js';

const MOST_TO_LOOK_AT = 12, MOST_CHANGES = 8;

export function titleOf(machine) {
  const {Model, HostName} = machine.parts('system')[0]?.values ?? {};
  return HostName ?? Model ?? 'This machine';
}

// "2 × model" of what is the same in most.
function mostCommon(parts, nameOf) {
  const counts = new Map();
  for (const part of parts) {
    const name = nameOf(part);
    if (name) counts.set(name, (counts.get(name) ?? 0) + 1);
  }
  const names = [...counts.keys()];
  return names.length === 1 ? names[0] : names.length > 1 ? plural(names.length, 'model') : '';
}

function sizeText(mebibytes) {
  const gibibytes = mebibytes / 1024;
  return gibibytes >= 1024 ? `${Number((gibibytes / 1024).toFixed(2))} TiB` : gibibytes >= 1 ? `${Number(gibibytes.toFixed(1))} GiB` : `${mebibytes} MiB`;
}

// Drives tell their capacity as a text.
function capacityText(drives) {
  const scale = {MB: 1e-6, GB: 1e-3, TB: 1, PB: 1e3};
  let sum = 0;
  for (const drive of drives) {
    const [, number, unit] = /^([\d.]+) ?([MGTP]B)$/.exec(drive.values.Capacity ?? '') ?? [];
    if (number) sum += Number(number) * scale[unit];
  }
  return sum === 0 ? '' : sum >= 1 ? `${Number(sum.toFixed(1))} TB` : `${Math.round(sum * 1000)} GB`;
}

function tilesOf(machine) {
  const there = (name) => machine.parts(name).filter((part) => !part.isVacant);
  const processors = there('processors'), modules = there('memory'), adapters = there('adapters'), gpus = there('gpus'),
      drives = there('drives'), ports = there('ports');
  const cores = processors.reduce((sum, part) => sum + (part.values.CoreCount ?? 0), 0);
  const amount = (list) => list.reduce((sum, part) => sum + (part.values.MemSize ?? 0), 0);
  const persistent = modules.filter((part) => part.values.MemTypeName === 'persistent');
  const plain = modules.filter((part) => !persistent.includes(part));
  const up = ports.filter((part) => part.values.Link === 'up').length;
  return [
    ['processors', processors.length, 'processors', [cores > 0 && plural(cores, 'core'), mostCommon(processors, (part) => shortModel(part.values.Version))]],
    ['memory', amount(plain) > 0 ? sizeText(amount(plain)) : modules.length, 'memory',
     [amount(persistent) > 0 && `and ${sizeText(amount(persistent))} persistent`, `${modules.length} of ${plural(machine.parts('memory').length, 'module')}`]],
    ['adapters', adapters.length, 'adapters', [`${plural(adapters.filter((part) => part.values.Location === 1).length, 'card')} in slots`]],
    ['gpus', gpus.length, 'GPUs', [mostCommon(gpus, (part) => part.values.GPUChipName)]],
    ['drives', drives.length, 'drives', [capacityText(drives)]],
    ['ports', ports.length, 'ports', [ports.length > 0 && `${up} up, ${ports.length - up} not`]],
  ].filter(([name]) => machine.parts(name).length > 0);
}

function drawTile([name, number, noun, facts], machine) {
  const warnings = machine.parts(name).filter((part) => part.level === 'warning').length;
  return html('li', {}, html('a', {class: 'tile' + (warnings > 0 ? ' is-warning' : ''), href: `#/${name}`},
                             html('span', {class: 'big'}, String(number)), html('span', {class: 'noun'}, noun),
                             facts.filter(Boolean).map((fact) => html('span', {class: 'fact'}, fact)),
                             warnings > 0 && html('span', {class: 'flag'}, plural(warnings, 'warning'))));
}

function drawLook(machine) {
  const found = machine.worthALook();
  const heading = html('h2', {}, 'Worth a look');
  if (found.length === 0) return html('section', {class: 'panel is-look'}, heading, html('p', {class: 'quiet is-good'}, 'Nothing: every part is as it should be.'));
  const groups = new Map();
  for (const part of found) {
    const reason = reasonOf(part);
    const key = `${part.of.name} ${reason}`;
    if (!groups.has(key)) groups.set(key, {reason, parts: []});
    groups.get(key).parts.push(part);
  }
  const all = [...groups.values()];
  const item = ({reason, parts}) => {
    const [part] = parts, level = part.level || 'pending';
    const href = parts.length > 1 ? `#/${part.of.name}?only` : part.href;
    const name = parts.length > 3 ? plural(parts.length, 'part') : parts.map((each) => each.name).join(', ');
    return html('li', {}, html('a', {href: parts.length > 3 ? href : part.href, class: `look is-${level}`},
                               html('span', {class: 'class'}, part.of.name), html('b', {}, name), html('span', {class: 'what'}, reason)));
  };
  return html('section', {class: 'panel is-look'}, heading, html('ul', {class: 'looks'}, all.slice(0, MOST_TO_LOOK_AT).map(item)),
              all.length > MOST_TO_LOOK_AT && html('p', {class: 'quiet'}, `and ${all.length - MOST_TO_LOOK_AT} more in the tables`));
}

export function drawOverview(machine, history) {
  const system = machine.parts('system')[0];
  const {Manufacturer, Model, SerialNo, HostName, FirmwareVersion, Collected} = system?.values ?? {};
  const facts = [['Serial', SerialNo], ['Firmware', FirmwareVersion], ['Collected', Collected]].filter(([, value]) => value);
  const heading = Model ?? HostName ?? 'This machine';
  const panel = (name, drawing) => drawing && html('section', {class: `panel is-${name}`}, drawing);
  return html('article', {class: 'overview'},
              html('div', {class: 'identity'},
                   html('div', {}, html('p', {class: 'maker'}, [Manufacturer, HostName && HostName !== heading && HostName].filter(Boolean).join(' · ') || 'Hardware inventory'),
                        html('h1', {}, system ? html('a', {href: system.href}, heading) : heading)),
                   html('dl', {class: 'facts'}, facts.map(([name, value]) => html('div', {}, html('dt', {}, name), html('dd', {}, String(value)))))),
              html('ul', {class: 'tiles'}, tilesOf(machine).map((tile) => drawTile(tile, machine))),
              html('div', {class: 'panels'}, drawLook(machine),
                   html('div', {class: 'machine'}, panel('board', drawBoard(machine)), panel('tree', drawTree(machine)),
                        panel('bays', drawBays(machine)), panel('ports', drawPorts(machine)), legend()),
                   html('section', {class: 'panel is-changes'}, html('h2', {}, 'Changes'), drawChanges(machine, history.changes, history.error, 'Nothing has changed yet.', MOST_CHANGES),
                        history.changes.length > MOST_CHANGES && html('p', {class: 'all'}, html('a', {href: '#/changes'}, 'All changes')))));
}

function legend() {
  const entry = (kind, text) => html('li', {}, html('span', {class: `swatch ${kind}`, 'aria-hidden': 'true'}), text);
  return html('ul', {class: 'legend', 'aria-label': 'Legend'}, entry('is-link', 'link, as thick as it has lanes'), entry('is-reduced', 'narrower or slower than it could be'),
              entry('is-warning', 'deserves a look'), entry('is-pending', 'change pending'), entry('is-empty', 'empty'), entry('is-new', 'changed just now'));
}
