// The switches of the faults. A switch is on as long as a fault of its kind waits on the server, whoever asked for it.
import { byId, make, tell } from './elements.js';

const number = (key, label, value, most) => ({ key, label, value, type: 'number', min: 0, max: most });
const text = (key, label, value) => ({ key, label, value, type: 'text' });

const kinds = [
  { kind: 'delay', meaning: 'the reply waits', inputs: [number('milliseconds', 'Milliseconds', 1000, 600000)] },
  { kind: 'close', meaning: 'the connection ends in the midst of the reply',
    inputs: [number('bytes', 'After bytes', 40, 1000000000)] },
  { kind: 'wrong-digest', meaning: 'the digest belongs to another text' },
  { kind: 'digest-without-zero', meaning: 'the digest leaves out the last zero byte' },
  { kind: 'wrong-client-challenge', meaning: "not the client's own challenge comes back" },
  { kind: 'changed-server-challenge', meaning: "the server's challenge changes" },
  { kind: 'bad-padding', meaning: 'the reply ends with a padding that none is' },
  { kind: 'bad-base64', meaning: 'the body holds a character that base64 has not' },
  { kind: 'cut-body', meaning: 'the body is shorter than announced',
    inputs: [number('bytes', 'Bytes', 10, 1000000000)] },
  { kind: 'content-length', meaning: 'another length is announced', inputs: [text('value', 'Content-Length', '0')] },
  { kind: 'status', meaning: 'this status, and nothing is done',
    inputs: [{ ...number('code', 'Status', 503, 999), min: 100 }, text('location', 'Location', '')] },
  { kind: 'field', meaning: 'a field has this value; without one it is left out',
    inputs: [text('name', 'Field', 'KEST-TxN'), text('value', 'Value', '')] },
  { kind: 'headers', meaning: 'the head has one line more', inputs: [text('lines', 'Line', 'X-Long: begins here')] },
];

let failed = () => {};  // shows words to the reader

const inputId = (kind, key) => `fault-${kind}-${key}`;

// What the server takes for a kind whose parameters have these texts.
function parameter(kind, input, value) {
  if (input.type === 'number') return Number(value);
  if (input.key === 'lines') return [value];
  if (kind === 'field' && input.key === 'value' && value === '') return null;
  if (input.key === 'location' && value === '') return undefined;  // which JSON leaves out
  return value;
}

function faultOf({ kind, inputs = [] }) {
  const fault = { kind, at: byId('fault-at').value };
  for (const input of inputs) fault[input.key] = parameter(kind, input, byId(inputId(kind, input.key)).value);
  if (byId('fault-service').value) fault.service = byId('fault-service').value;
  if (byId('fault-times').value === 'always') fault.times = 'always';
  return fault;
}

async function turn(row, toggle) {
  try {
    await (toggle.checked ? tell('/faults', { faults: [faultOf(row)] }) : tell('/faults/clear', { kind: row.kind }));
    failed('');
  } catch (error) {
    toggle.checked = !toggle.checked;
    failed(`The fault was not changed: ${error.message}`);
  }
}

function inputOf(kind, input) {
  const { key, label, ...attributes } = input;
  return make('label', {}, `${label} `, make('input', { id: inputId(kind, key), autocomplete: 'off', ...attributes }));
}

function rowOf(row) {
  const id = `fault-${row.kind}`;
  const toggle = make('input', { type: 'checkbox', role: 'switch', id, 'aria-describedby': `${id}-meaning` });
  toggle.addEventListener('change', () => turn(row, toggle));
  const item = make('li', {},
    make('div', { class: 'fault' },
      make('label', { for: id }, row.kind),
      make('span', { id: `${id}-left`, class: 'left' }),
      toggle),
    make('p', { id: `${id}-meaning`, class: 'hint' }, row.meaning));
  if (row.inputs) {
    item.append(make('div', { class: 'inputs' }, ...row.inputs.map((input) => inputOf(row.kind, input))));
  }
  return item;
}

/** Draws the switches; what fails is told to the function. */
export function drawFaults(onFailure) {
  failed = onFailure;
  byId('faults').replaceChildren(...kinds.map(rowOf));
}

function leftOf(waiting) {
  if (waiting.some((fault) => fault.left === 'always')) return 'always';
  const sum = waiting.reduce((total, fault) => total + fault.left, 0);
  return sum === 0 ? '' : `${sum} to come`;
}

// As long as a fault waits, its input shows what the fault has.
function showInput(input, fault, key) {
  input.disabled = fault !== undefined;
  if (fault) input.value = [fault[key] ?? ''].flat().join(' ');
}

/** Sets the switches to the faults that wait. */
export function updateFaults(waiting) {
  for (const { kind, inputs = [] } of kinds) {
    const own = waiting.filter((fault) => fault.kind === kind);
    byId(`fault-${kind}`).checked = own.length > 0;
    const left = byId(`fault-${kind}-left`);
    if (left.textContent !== leftOf(own)) left.textContent = leftOf(own);
    for (const { key } of inputs) showInput(byId(inputId(kind, key)), own[0], key);
  }
}
