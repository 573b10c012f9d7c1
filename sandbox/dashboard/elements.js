// Elements and requests of the page. Every value that came from elsewhere becomes text here, never markup.

const longestText = 2000;  // characters of a value that are shown

/** Makes an element; its children are elements or texts. */
export function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  element.append(...children);  // a text becomes a text node
  return element;
}

/** Cuts a long text and says how long it was. */
export function shortened(text) {
  if (text.length <= longestText) return text;
  return `${text.slice(0, longestText)}… (${text.length} characters)`;
}

/** Makes the element of a moment, given as ISO 8601 in UTC, in the reader's own time. */
export function moment(iso) {
  const when = new Date(iso);
  const today = when.toDateString() === new Date().toDateString();
  const form = today ? { timeStyle: 'medium' } : { dateStyle: 'short', timeStyle: 'medium' };
  return make('time', { datetime: iso, title: iso }, when.toLocaleString([], { ...form, hour12: false }));
}

export const byId = (id) => document.getElementById(id);

async function answered(path, options) {
  const reply = await fetch(path, { ...options, signal: AbortSignal.timeout(10000) });
  const json = await reply.json();
  if (!reply.ok) throw new Error(json.error);
  return json;
}

/** Asks the server; fails with its words when it refuses. */
export const ask = (path) => answered(path, {});

/** Tells the server to do something; fails with its words when it refuses. */
export function tell(path, body = {}) {
  const headers = { 'Content-Type': 'application/json' };
  return answered(path, { method: 'POST', headers, body: JSON.stringify(body) });
}
