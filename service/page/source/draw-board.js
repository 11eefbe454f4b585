// Sockets with their memory channels: a die in the middle, channels to both sides where there is room.
import {plural, textWidth} from './dom.js';
import {box, Drawing, label, line, partLink} from './drawing.js';

const ROW = 28, MODULE = 22, GAP = 24, CAPTION = 22, DIE = 104;

// "Intel(R) Xeon(R) Platinum 8358 CPU @ 2.60GHz" without what does not tell processors apart.
export function shortModel(version) {
  return String(version ?? '').replace(/\((R|TM|r|tm)\)/g, '').replace(/\s*@.*$/, '')
      .replace(/\b(CPU|Processor|\d+-Core)\b/g, '').replace(/\s+/g, ' ').trim();
}

// Positions count from 0 or from 1; processors are in their order.
function byProcessor(machine) {
  const processors = machine.parts('processors'), modules = machine.parts('memory');
  const numbers = modules.map((module) => module.values.CPUIndex).filter((number) => number !== null);
  const first = numbers.includes(0) || Math.max(0, ...numbers) > processors.length ? 0 : 1;
  const blocks = processors.map((processor) => ({processor, modules: []}));
  const others = [];
  for (const module of modules) {
    const {CPUIndex} = module.values;
    const block = CPUIndex === null ? (blocks.length === 1 ? blocks[0] : undefined) : blocks[CPUIndex - first];
    (block?.modules ?? others).push(module);
  }
  if (others.length > 0) blocks.push({processor: null, modules: others});
  return blocks;
}

// Rows of modules, one for each channel; where nobody knows the channels, rows of two.
function channelsOf(modules) {
  const channels = new Map();
  const isKnown = modules.every((module) => module.values.ChannelNum !== null);
  modules.forEach((module, i) => {
    const {iMCNum, ChannelNum} = module.values;
    const key = isKnown ? `${iMCNum ?? ''}/${ChannelNum}` : String(i >> 1);
    if (!channels.has(key)) channels.set(key, []);
    channels.get(key).push(module);
  });
  return [...channels.values()];
}

function drawModule(module, x, y, width) {
  const {Size, MemTypeName, ClockSpeed, Locator} = module.values;
  if (module.isVacant) {
    return partLink(module, '', box(x, y, width, MODULE, 'is-empty', 3),
                    label(x + width / 2, y + 15, 'empty', {room: width - 6, size: 11, kind: 'is-quiet', anchor: 'middle'}));
  }
  const isPersistent = MemTypeName === 'persistent';
  const type = isPersistent ? 'PMem' : [MemTypeName, ClockSpeed].filter(Boolean).join('-');
  const size = String(Size ?? '').replace(/^(\d+) MiB$/, (all, number) => (number >= 10240 ? `${Math.round(number / 1024)} GiB` : all));
  if (size === '') {
    return partLink(module, ['size not known', type].join(' '), box(x, y, width, MODULE, 'is-module', 3),
                    label(x + width / 2, y + 15.5, textWidth('size not known', 11) + 8 < width ? 'size not known' : '?', {size: 11, kind: 'is-quiet', anchor: 'middle'}));
  }
  const sizeWidth = textWidth(size, 12, 600);
  const hasRoom = sizeWidth + textWidth(type, 11) + 22 <= width;
  const text = hasRoom ?
      [label(x + 8, y + 15.5, size, {size: 12, weight: 600}), label(x + width - 7, y + 15.5, type, {size: 11, kind: 'is-quiet', anchor: 'end'})] :
      label(x + width / 2, y + 15.5, size, {room: width - 6, size: sizeWidth + 6 > width ? 11 : 12, weight: 600, anchor: 'middle'});
  return partLink(module, [Locator && !module.name.includes(Locator) ? Locator : '', Size, type].filter(Boolean).join(' '),
                  box(x, y, width, MODULE, isPersistent ? 'is-module is-persistent' : 'is-module', 3), text);
}

function drawChannels(channels, x, y, width, traceTo, isLeft) {
  const deepest = Math.max(...channels.map((channel) => channel.length));
  const each = Math.min(190, (width - (deepest - 1) * 4) / deepest);
  return channels.map((channel, row) => {
    const top = y + row * ROW;
    const middle = top + MODULE / 2;
    const far = channel.length * (each + 4) - 4;
    const start = isLeft ? x + width : x;
    return [
      line([[traceTo, middle], [isLeft ? start - far : start + far, middle]], 2, 'is-trace'),
      channel.map((module, i) => drawModule(module, isLeft ? start - (i + 1) * each - i * 4 : start + i * (each + 4), top, each)),
    ];
  });
}

// Word by word, in as many lines as it takes.
function wrapped(text, room) {
  const lines = [];
  for (const word of String(text ?? '').split(' ')) {
    const longer = lines.length > 0 ? `${lines.at(-1)} ${word}` : word;
    if (lines.length > 0 && textWidth(longer, 12, 600) <= room) lines[lines.length - 1] = longer;
    else lines.push(word);
  }
  return lines;
}

function drawDie(processor, x, y, width, height) {
  const {Socket, State, CoreCount, ThreadCount, CurSpeed} = processor.values;
  const isEmpty = processor.isVacant, isOff = processor.level === 'warning';
  const facts = isEmpty ? ['empty'] : isOff ? wrapped(State, width - 22) : [
    CoreCount && plural(CoreCount, 'core'),
    ThreadCount && plural(ThreadCount, 'thread'),
    CurSpeed && `${(CurSpeed / 1000).toFixed(1)} GHz`,
  ].filter(Boolean);
  const room = Math.max(0, Math.min(facts.length, Math.floor((height - 30) / 17)));
  const first = y + height / 2 - (room * 17) / 2 + 3;
  return partLink(processor, [processor.values.Version, ...facts].filter(Boolean).join(', '),
                  box(x, y, width, height, isEmpty ? 'is-empty' : 'is-die', 6),
                  isEmpty ? [] : box(x + 7, y + 7, width - 14, height - 14, 'is-lid', 3),
                  label(x + width / 2, first, Socket ?? 'Processor', {room: width - 22, size: 14, weight: 650, anchor: 'middle'}),
                  facts.slice(0, room).map((fact, i) => label(x + width / 2, first + 18 + i * 17, fact,
                                                              {room: width - 22, size: 12, weight: isOff ? 600 : 400, kind: isOff ? 'is-loud' : 'is-quiet', anchor: 'middle'})));
}

function measure(block, width) {
  const channels = channelsOf(block.modules);
  const isBoth = block.processor !== null && width >= 420 && channels.length > 3;
  const rows = isBoth ? Math.ceil(channels.length / 2) : channels.length;
  const height = Math.max(rows * ROW - (ROW - MODULE), block.processor ? 86 : 0);
  return {channels, isBoth, height};
}

function drawBlock({processor, modules}, {channels, isBoth, height}, x, y, width) {
  const name = processor ? shortModel(processor.values.Version) : 'Memory of no known socket';
  const caption = label(x, y + 13, name || (processor ? '' : 'Memory'), {room: width, size: 12, weight: 600});
  const top = y + CAPTION;
  if (!processor) return [caption, drawChannels(channels, x, top, width, x, false)];
  if (modules.length === 0) return [caption, drawDie(processor, x, top, Math.min(width, 190), height)];
  const die = width < 330 ? 88 : DIE;
  if (!isBoth) {
    return [caption, drawChannels(channels, x + die + 14, top, width - die - 14, x + die, false), drawDie(processor, x, top, die, height)];
  }
  const half = Math.ceil(channels.length / 2), side = (width - die) / 2 - 14;
  return [
    caption,
    drawChannels(channels.slice(0, half), x, top, side, x + side + 14, true),
    drawChannels(channels.slice(half), x + side + die + 28, top, side, x + side + 14 + die, false),
    drawDie(processor, x + side + 14, top, die, height),
  ];
}

export function drawBoard(machine) {
  const blocks = byProcessor(machine);
  if (blocks.length === 0) return null;
  const modules = machine.parts('memory');
  const full = modules.filter((module) => !module.isVacant).length;
  const note = modules.length > 0 ? `${full} of ${plural(modules.length, 'position')} filled` : '';
  return new Drawing().setUp('Processors and memory', note, (width) => {
    const columns = Math.min(blocks.length, Math.max(1, Math.floor((width + GAP) / (430 + GAP))));
    const each = (width - (columns - 1) * GAP) / columns;
    const children = [];
    let y = 0;
    for (let i = 0; i < blocks.length; i += columns) {
      const measured = blocks.slice(i, i + columns).map((block) => measure(block, each));
      measured.forEach((found, column) => children.push(drawBlock(blocks[i + column], found, column * (each + GAP), y, each)));
      y += CAPTION + Math.max(...measured.map((found) => found.height)) + 22;
    }
    return {height: y - 20, children};
  });
}
