// Makes the workbooks the importer's tests read, in both formats the
// importer takes: item lists laid out as a machine's workbook is, and a few
// odd ones. The files it writes are committed, so that the tests need no
// Node.js; run it again after changing it:
//   cd tests/importer/data && npm install --no-save xlsx@0.18.5 cfb@1.2.2 && node make-workbooks.mjs
import { createRequire } from 'module';
const require = createRequire(import.meta.url);
const XLSX = require('xlsx');
const CFB = require('cfb');
const fs = require('fs');

const col = (c) => XLSX.utils.encode_col(c);
function sheetOf(cells) {
  const ws = {};
  let maxR = 0, maxC = 0;
  for (const [r, c, v] of cells) {
    const cell = typeof v === 'object' ? v : { t: typeof v === 'number' ? 'n' : 's', v };
    ws[col(c) + (r + 1)] = cell;
    maxR = Math.max(maxR, r); maxC = Math.max(maxC, c);
  }
  ws['!ref'] = `A1:${col(maxC)}${maxR + 1}`;
  return ws;
}

// The BIFF8 file re-wrapped as spreadsheet programs write it: root entry
// "Root Entry", the Workbook stream long enough to live outside the mini stream.
function biff8(wb) {
  const raw = CFB.read(XLSX.write(wb, { bookType: 'biff8', type: 'buffer' }), { type: 'buffer' });
  let stream = CFB.find(raw, 'Workbook').content;
  if (stream.length <= 4096) stream = Buffer.concat([Buffer.from(stream), Buffer.alloc(4097 - stream.length)]);
  const out = CFB.utils.cfb_new({ root: 'Root Entry' });
  CFB.utils.cfb_add(out, '/Workbook', stream);
  return CFB.write(out, { type: 'buffer', fileType: 'cfb' });
}

function save(name, cells, formats = ['xlsx', 'xls']) {
  const wb = XLSX.utils.book_new();
  XLSX.utils.book_append_sheet(wb, sheetOf(cells), 'Liste');
  if (formats.includes('xlsx'))
    fs.writeFileSync(name + '.xlsx', XLSX.write(wb, { bookType: 'xlsx', type: 'buffer', compression: true }));
  if (formats.includes('xls')) fs.writeFileSync(name + '.xls', biff8(wb));
}

// Language 1 English, language 2 Greek; the text columns of language n are
// n + 3 (Device), n + 15 (Result), n + 42 (Function).
function alarmRow(cells, r, number, n, greek = true) {
  cells.push([r, 1, number]);
  cells.push([r, 3, `B${n}`], [r, 12, `K${n}`], [r, 15, 'CPU1'], [r, 54, n % 3]);
  cells.push([r, 4, `Device ${n}`], [r, 16, `Result ${n}`], [r, 43, `Function ${n}\r\nsecond line`]);
  if (greek) cells.push([r, 5, `Συσκευή ${n}`], [r, 17, `Αποτέλεσμα ${n}`], [r, 44, `Λειτουργία ${n}`]);
}
function warningRow(cells, r, number, n, greek = true) {
  cells.push([r, 1, number], [r, 43, `Warning ${n}`]);
  if (greek) cells.push([r, 44, `Προειδοποίηση ${n}`]);
}

function layout(added, greek = true) {
  const cells = [[0, 0, 'Alarm list'], [1, 1, 'No.']];
  for (let n = 1; n <= 256; ++n) alarmRow(cells, 1 + n, n, n, greek);
  cells.push([13, 1, '12a']); // alarm 12's number is no number
  for (let n = 1; n <= 256; ++n) warningRow(cells, 258 + n, n, n, greek);
  cells.push([263, 43, '']); // warning 5 has no English text
  if (added > 0) {
    cells.push([515, 0, 'alarmsadded'], [516, 0, 'WarningsAdded']);
    for (let k = 0; k < added; ++k) alarmRow(cells, 516 + k, 257 + k, 257 + k, greek);
    for (let k = 0; k < added; ++k) warningRow(cells, 516 + added + k, 257 + k, 257 + k, greek);
  }
  cells.push([2000, 1, 'Caption 1'], [2000, 27, 'Caption 2'], [2000, 12, 'Caption 8']);
  return cells;
}

save('layout', layout(3));
save('layout-plain', layout(0), ['xlsx']);

// Material change: a heading, then one text per row in the column of each language.
const changes = [[0, 0, 'English'], [0, 2, 'Ελληνικά']];
for (let n = 1; n <= 1000; n += 111) changes.push([n, 0, `Change ${n}`], [n, 2, `Αλλαγή ${n}`]);
save('material-change', changes);

// A full list for the benchmark: 999 added alarms and warnings, every English text filled.
save('full', layout(999, false));
const full = [[0, 0, 'English']];
for (let n = 1; n <= 1000; ++n) full.push([n, 0, `Material change ${n}: empty the magazine, set the guide rails.`]);
save('full-material-change', full, ['xlsx']);

// A cell far beyond the layout, and a formula numbering the rows.
save('far-cell', [[0, 0, 'near'], [65000, 200, 'far']]);
const formulas = layout(0);
formulas.push([2, 1, { t: 'n', v: 1 }], [3, 1, { t: 'n', f: 'B3+1', v: 2 }]);
save('formulas', formulas, ['xlsx']);
