// Keeps the page up with the server: it asks for the counts once a second, and for the rest when they have changed.
import { ask, byId, tell } from './elements.js';
import { drawFaults, updateFaults } from './faults.js';
import { updateRequests } from './requests.js';
import { updateSales } from './sales.js';

const interval = 1000;  // milliseconds

const counts = ['sales', 'refusals', 'bills', 'requests', 'refused', 'sessions'];

let timer = 0;
let asking = false;
let again = false;       // something has changed while the server was asked
let salesDrawn = false;

const isPaused = () => byId('pause').getAttribute('aria-pressed') === 'true';

// A live region is written only when its words change, or it would be read out every second.
function show(element, words) {
  if (element.textContent !== words) element.textContent = words;
}

function showLink(state, words) {
  byId('link').dataset.state = state;
  show(byId('link'), words);
}

function showFailure(words) {
  byId('failure').hidden = words === '';
  show(byId('failure'), words);
}

async function update() {
  const state = await ask('/state');
  for (const name of counts) show(byId(`count-${name}`), state[name].toLocaleString('en'));
  updateFaults(state.faults);
  const news = await updateRequests(state.requests);
  if (news || !salesDrawn) await updateSales();
  salesDrawn = true;
  showLink('live', 'live');
}

async function keepUp() {
  if (asking) {
    again = true;
    return;
  }
  clearTimeout(timer);
  asking = true;
  try {
    do {
      again = false;
      await update();
    } while (again);
  } catch {
    salesDrawn = false;
    showLink('lost', 'not reachable');
  }
  asking = false;
  wait();
}

function wait() {
  clearTimeout(timer);
  if (isPaused()) showLink('paused', 'paused');
  if (!isPaused() && !document.hidden) timer = setTimeout(keepUp, interval);
}

function pause() {
  byId('pause').setAttribute('aria-pressed', String(!isPaused()));
  show(byId('pause'), isPaused() ? 'Go on' : 'Pause');
  if (isPaused()) wait();
  else keepUp();
}

async function reset() {
  byId('confirm').close();
  try {
    await tell('/reset');
    showFailure('');
  } catch (error) {
    showFailure(`Nothing was reset: ${error.message}`);
  }
  keepUp();
}

drawFaults((words) => {
  showFailure(words);
  keepUp();
});
byId('pause').addEventListener('click', pause);
byId('reset').addEventListener('click', () => byId('confirm').showModal());
byId('confirm-no').addEventListener('click', () => byId('confirm').close());
byId('confirm-yes').addEventListener('click', reset);
byId('only-trouble').addEventListener('change', ({ target }) => {
  byId('requests').classList.toggle('only-trouble', target.checked);
});
document.addEventListener('visibilitychange', () => {
  if (!document.hidden && !isPaused()) keepUp();
});
keepUp();
