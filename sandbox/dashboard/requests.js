// The list of requests, the newest first: it grows at the top, so what a reader has opened stays open.
import { ask, byId, make, moment, shortened } from './elements.js';

const most = 100;        // requests in the list
const mostFields = 200;  // of a request or reply

const list = byId('requests');
let newest = null;  // the last request that the server told of

const same = (one, other) =>
  one !== undefined && one.number === other.number && one.time === other.time && one.peer === other.peer;

function fieldsOf(title, fields) {
  if (fields.length === 0) return [];
  const rows = fields.slice(0, mostFields).map(([name, value]) =>
    make('div', {}, make('dt', {}, shortened(name)), make('dd', {}, shortened(value))));
  const rest = fields.length - mostFields;
  if (rest > 0) rows.push(make('p', { class: 'hint' }, `and ${rest} more`));
  return [make('h3', {}, title), make('dl', { class: 'fields' }, ...rows)];
}

function badge(kind, text) {
  return make('span', { class: `badge ${kind}` }, text);
}

const nameOf = (request) => request.path.slice(1) || 'no service';

function errorOf(request) {
  const field = request.reply.find(([name]) => name.toLowerCase() === 'kest-error');
  return field && field[1] !== '0' ? field[1] : '';
}

function rowOf(request) {
  const error = errorOf(request);
  const status = request.status === 200 ? 'good' : 'bad';
  const summary = make('summary', {},
    make('span', { class: 'number' }, `#${request.number}`),
    make('span', { class: 'name' }, shortened(nameOf(request)),
      make('span', { class: 'kind' }, request.kind === 'handshake' ? ' handshake' : '')),
    make('span', { class: 'badges' },
      ...request.faults.map((kind) => badge('fault', kind)),
      ...(error ? [badge('warn', `error ${error}`)] : []),
      badge(status, String(request.status))),
    moment(request.time));
  const details = make('details', {}, summary);
  if (request.refusal) details.append(make('p', { class: 'refusal' }, `Refused: ${request.refusal}.`));
  details.append(make('p', { class: 'hint' }, `from ${request.peer}`));
  details.append(...fieldsOf('Request', request.request), ...fieldsOf('Reply', request.reply));
  const trouble = request.refusal || request.faults.length > 0 || error || request.status !== 200;
  return make('li', trouble ? { class: 'trouble' } : {}, details);
}

function announce(requests) {
  const last = requests[requests.length - 1];
  const words = `${nameOf(last)}${last.kind === 'handshake' ? ' handshake' : ''} answered with ${last.status}`;
  byId('news').textContent = requests.length === 1 ? words : `${requests.length} new requests, the last: ${words}`;
}

async function askSince(number) {
  return (await ask(`/requests?since=${number}`)).requests;
}

/** Brings the list up to a server that has counted so many requests; tells whether anything was new. */
export async function updateRequests(count) {
  if (!newest && count === 0) return false;
  // The newest known one is asked for again: when another has its number, the server was reset in between.
  let fresh = await askSince(newest ? newest.number - 1 : Math.max(0, count - most));
  if (newest && same(fresh[0], newest)) {
    fresh.shift();
    if (fresh.length === 0) return false;
  } else if (newest) {
    list.replaceChildren();
    newest = null;
    fresh = await askSince(Math.max(0, count - most));
  }
  const first = newest === null;
  for (const request of fresh.slice(-most)) list.prepend(rowOf(request));
  while (list.children.length > most) list.lastElementChild.remove();
  if (fresh.length === 0) return true;
  newest = fresh[fresh.length - 1];
  list.start = newest.number;
  if (!first) announce(fresh);
  return true;
}
