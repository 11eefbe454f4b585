// Who asks.
import {html} from './dom.js';
import {logIn} from './server.js';

export function drawLogin(onDone) {
  const user = html('input', {name: 'user', autocomplete: 'username', autocapitalize: 'none', spellcheck: 'false', required: true});
  const password = html('input', {name: 'password', type: 'password', autocomplete: 'current-password', required: true});
  const button = html('button', {type: 'submit'}, 'Log in');
  const objection = html('p', {class: 'objection', role: 'alert'});
  const form = html('form', {class: 'panel login', onsubmit: async (event) => {
    event.preventDefault();
    button.disabled = true;
    objection.textContent = '';
    const reason = await logIn(user.value, password.value);
    button.disabled = false;
    if (reason === '') return onDone();
    objection.textContent = reason;
    password.value = '';
    password.focus();
  }}, html('h1', {}, 'Log in'), html('p', {class: 'quiet'}, 'The inventory of this machine is for those who have an account on it.'),
     html('label', {}, 'Name', user), html('label', {}, 'Password', password), objection, button);
  queueMicrotask(() => user.focus());
  return form;
}
