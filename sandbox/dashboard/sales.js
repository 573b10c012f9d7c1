// The tables of sales and of declined cards, drawn anew whenever something has happened.
import { ask, byId, make, moment, shortened } from './elements.js';

const labelled = (label, ...children) => make('td', { 'data-label': label }, ...children);

function products(sale) {
  const lines = sale.products.map((one) =>
    make('li', {}, shortened(one.name), make('span', { class: 'hint' }, ` × ${one.quantity}`)));
  const rest = sale.lines - sale.products.length;
  if (rest > 0) lines.push(make('li', { class: 'hint' }, `and ${rest} more`));
  return make('ul', { class: 'products' }, ...lines);
}

function amount(label, text, remark) {
  const cell = labelled(label, make('b', {}, text));
  if (remark) cell.append(make('span', { class: 'hint' }, remark));
  cell.classList.add('sum');
  return cell;
}

function saleRow(sale) {
  return make('tr', {},
    labelled('Number', String(sale.number)),
    labelled('Products', products(sale)),
    labelled('Card', make('span', { class: 'digits' }, sale.card)),
    labelled('Time', moment(sale.time)),
    amount('Total', sale.total, `tax ${sale.tax}`));
}

function refusalRow(refusal) {
  return make('tr', {},
    labelled('Code', make('span', { class: 'badge warn' }, String(refusal.code))),
    labelled('Why', refusal.meaning),
    labelled('Card', make('span', { class: 'digits' }, refusal.card || 'no card number')),
    labelled('Time', moment(refusal.time)),
    amount('Amount', refusal.amount));
}

export async function updateSales() {
  const { sales, refusals } = await ask('/sales');
  byId('sales').replaceChildren(...sales.map(saleRow));
  byId('refusals').replaceChildren(...refusals.map(refusalRow));
}
