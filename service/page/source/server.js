// What the server is asked, and how it is told who asks.

const SESSIONS = '/redfish/v1/SessionService/Sessions';
const TOKEN = 'zymdb.token', SESSION = 'zymdb.session';

export class LoginNeeded extends Error {}

export class NotNow extends Error {
  constructor(message, seconds, isUnreachable = false) {
    super(message);
    this.seconds = seconds;
    this.isUnreachable = isUnreachable;
  }
}

let token = read(TOKEN), session = read(SESSION);

function read(name) {
  try {
    return sessionStorage.getItem(name);
  } catch {
    return null;
  }
}

function keep(newToken, newSession) {
  token = newToken;
  session = newSession;
  try {
    for (const [name, value] of [[TOKEN, token], [SESSION, session]]) {
      if (value) sessionStorage.setItem(name, value);
      else sessionStorage.removeItem(name);
    }
  } catch {
    // Then the session lasts as long as the page.
  }
}

function headers(more = {}) {
  return {'X-Requested-With': 'zymdb', ...(token ? {'X-Auth-Token': token} : {}), ...more};
}

export const isLoggedIn = () => token !== null;

async function ask(path, options = {}) {
  let response;
  try {
    response = await fetch(path, {cache: 'no-cache', credentials: 'same-origin', ...options, headers: headers(options.headers)});
  } catch (error) {
    if (error.name === 'AbortError') throw error;
    throw new NotNow('The server does not answer.', 3, true);
  }
  if (response.status === 401) {
    keep(null, null);
    throw new LoginNeeded();
  }
  if (!response.ok) throw new NotNow(await reasonOf(response), Number(response.headers.get('Retry-After')) || 5);
  return response;
}

async function reasonOf(response) {
  try {
    const body = await response.json();
    return typeof body.error === 'string' ? body.error : `The server answers ${response.status}.`;
  } catch {
    return `The server answers ${response.status}.`;
  }
}

export async function load(path) {
  const response = await ask(path);
  try {
    return await response.json();
  } catch {
    throw new NotNow('The answer of the server was cut short.', 3);
  }
}

// Answers why not, or nothing.
export async function logIn(user, password) {
  let response;
  try {
    response = await fetch(SESSIONS, {
      method: 'POST',
      credentials: 'same-origin',
      headers: {'X-Requested-With': 'zymdb', 'Content-Type': 'application/json'},
      body: JSON.stringify({UserName: user, Password: password}),
    });
  } catch {
    return 'The server does not answer.';
  }
  const newToken = response.headers.get('X-Auth-Token');
  if (response.ok && newToken) {
    keep(newToken, response.headers.get('Location'));
    return '';
  }
  if (response.status === 401) return 'This name and password do not belong to an account.';
  if (response.status === 403) return 'This account may not read the inventory.';
  if (response.status === 429 || response.status === 503) return 'Too many logins. Try again in a while.';
  return `The server answers ${response.status}.`;
}

export async function logOut() {
  const path = session && new URL(session, location.href);
  const request = headers();
  keep(null, null);
  if (path && path.origin === location.origin) {
    await fetch(path.pathname, {method: 'DELETE', credentials: 'same-origin', headers: request}).catch(() => {});
  }
}

// Calls `onGeneration` for each generation that the server tells of, until the stream ends. EventSource could not
// say who asks.
export async function listen(onGeneration, signal) {
  const response = await ask('events', {headers: {Accept: 'text/event-stream'}, signal});
  const reader = response.body.pipeThrough(new TextDecoderStream()).getReader();
  let rest = '';
  for (;;) {
    const {done, value} = await reader.read().catch(() => ({done: true}));
    if (done) return;
    const events = (rest + value).split('\n\n');
    rest = events.pop();
    for (const event of events) {
      const data = event.split('\n').find((line) => line.startsWith('data: '));
      if (data) onGeneration(JSON.parse(data.slice(6)).generation);
    }
  }
}
