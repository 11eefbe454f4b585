// The inventory as the page sees it: parts by class, what they are called, what of them deserves a look, and which
// belong together.

function slugOf(name) {
  return name.toLowerCase().replace(/[^\p{L}\p{N}]+/gu, '-').replace(/^-+|-+$/g, '') || 'part';
}

// Where the part's function is, by whichever field its class has for it.
function addressOf(part) {
  return part.values.Address ?? part.values.Function ?? null;
}

// The slot or bay that the part is in, where that is one of its own.
function placeOf(part) {
  const place = String(part.values.Place ?? part.values.Location ?? '').toLowerCase();
  return /^(slot|bay) /.test(place) ? place : null;
}

class Part {
  constructor(of, values, told, slug) {
    this.of = of;
    this.values = values;
    this.name = told.name;
    this.place = told.place;
    this.model = told.model;
    this.isVacant = told.vacant === true;
    this.attention = told.attention ?? {};
    this.slug = slug;
    this.href = `#/${of.name}/${encodeURIComponent(slug)}`;
    this.text = null;
  }

  // The worst that a field deserves: 'warning', 'absent' or ''.
  get level() {
    const levels = Object.values(this.attention);
    return levels.includes('warning') ? 'warning' : levels.includes('absent') ? 'absent' : '';
  }

  get isPending() {
    const {PendingValue, CurrentValue, PendingVersionString} = this.values;
    return (PendingValue != null && PendingValue !== CurrentValue) || PendingVersionString != null;
  }

  matches(words) {
    this.text ??= [this.name, ...this.of.fields.map((field) => textOf(field, this.values[field.key]))].join('\n').toLowerCase();
    return words.every((word) => this.text.includes(word));
  }
}

export function textOf(field, value) {
  if (value === null || value === undefined) return '';
  if (field.hex_digits > 0 && typeof value === 'number') return '0x' + value.toString(16).padStart(field.hex_digits, '0');
  return String(value);
}

export class Machine {
  constructor(inventory, parts, classes) {
    this.generation = inventory.generation;
    this.classes = classes.filter((each) => Array.isArray(inventory[each.name])).map((each) => ({...each, parts: []}));
    this.byName = new Map(this.classes.map((each) => [each.name, each]));
    this.byHref = new Map();
    this.byAddress = new Map();
    this.byPlace = new Map();
    for (const of of this.classes) {
      const taken = new Set();
      of.parts = inventory[of.name].map((values, i) => {
        const told = parts.classes[of.name][i];
        const base = slugOf(told.name);
        let slug = base;
        for (let n = 2; taken.has(slug); ++n) slug = `${base}-${n}`;
        taken.add(slug);
        const part = new Part(of, values, told, slug);
        this.byHref.set(part.href, part);
        const address = addressOf(part);
        if (address !== null) {
          if (!this.byAddress.has(address)) this.byAddress.set(address, []);
          this.byAddress.get(address).push(part);
        }
        const place = placeOf(part);
        if (place !== null) {
          if (!this.byPlace.has(place)) this.byPlace.set(place, []);
          this.byPlace.get(place).push(part);
        }
        return part;
      });
    }
  }

  parts(className) {
    return this.byName.get(className)?.parts ?? [];
  }

  find(className, slug) {
    return this.byHref.get(`#/${className}/${encodeURIComponent(slug)}`);
  }

  get isEmpty() {
    return this.classes.every((each) => each.parts.length === 0);
  }

  // Parts of a class at a function.
  at(address, className) {
    return (this.byAddress.get(address) ?? []).filter((part) => part.of.name === className);
  }

  // Parts of a class in a slot or bay.
  inPlace(place, className) {
    return (this.byPlace.get(place.toLowerCase()) ?? []).filter((part) => part.of.name === className);
  }

  // What else is known of the same piece of hardware, and what it hangs on.
  related(part) {
    const found = new Set();
    const add = (other) => other !== part && found.add(other);
    const place = placeOf(part);
    if (place !== null) this.byPlace.get(place).forEach(add);
    const address = addressOf(part);
    if (address === null) return [...found];
    for (const other of this.byAddress.get(address) ?? []) add(other);
    // A card is all the functions of its device.
    const device = address.replace(/\.[^.]*$/, '.');
    if (part.of.name === 'adapters' || part.of.name === 'functions') {
      for (let i = 0; i < 8; ++i) {
        for (const other of this.byAddress.get(device + i) ?? []) add(other);
      }
    }
    const bridge = part.values.Bridge;
    if (bridge) this.at(bridge, 'functions').forEach(add);
    if (part.of.name === 'functions') {
      for (const other of part.of.parts) {
        if (other.values.Bridge === address) add(other);
      }
    }
    return [...found];
  }

  worthALook() {
    const found = this.classes.flatMap((of) => of.parts.filter((part) => part.level !== '' || part.isPending));
    const rank = (part) => (part.level === 'warning' ? 0 : part.isPending ? 1 : 2);
    return found.sort((a, b) => rank(a) - rank(b));
  }

  // The parts that are not as they were, by their links; what changes while nothing happens does not count.
  changedSince(before) {
    const changed = [];
    for (const [href, part] of this.byHref) {
      const old = before.byHref.get(href);
      const differs = (field) => field.role !== 'volatile' && field.role !== 'row' && field.key !== 'CollectedAt' &&
          (old.values[field.key] ?? null) !== (part.values[field.key] ?? null);
      if (!old || part.of.fields.some(differs)) changed.push(part);
    }
    const gone = [...before.byHref.values()].filter((part) => !this.byHref.has(part.href));
    return {changed, gone};
  }
}

// Why a part deserves a look, in a few words.
export function reasonOf(part) {
  const reasons = [];
  for (const field of part.of.fields) {
    const level = part.attention[field.key];
    if (level === undefined) continue;
    reasons.push(`${field.heading.toLowerCase()} ${textOf(field, part.values[field.key])}`);
  }
  if (reasons.length === 0 && part.isPending) {
    const {PendingValue, PendingVersionString} = part.values;
    reasons.push(`pending: ${PendingVersionString ?? PendingValue}`);
  }
  return reasons.join(', ');
}
