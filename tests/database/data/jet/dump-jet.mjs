// Writes every table of a Jet file as JSON, read by the independent mdb-reader package,
// so that the C++ reader can be compared with it.
// Usage (in a scratch directory outside the repository):
//   npm install mdb-reader && node dump-jet.mjs <file.mdb> > <file>.json
import MDBReader from "mdb-reader";
import { readFileSync } from "node:fs";

function plain(value) {
    if (value === null || value === undefined) return null;
    if (value instanceof Date) return { date: value.toISOString().replace(/\.\d+Z$/, "") };
    if (Buffer.isBuffer(value)) return { hex: value.toString("hex") };
    if (typeof value === "bigint") return value.toString();
    return value;
}

const reader = new MDBReader(readFileSync(process.argv[2]));
const tables = {};
for (const name of reader.getTableNames()) {
    const table = reader.getTable(name);
    const columns = table.getColumns().map((c) => ({ name: c.name, type: c.type }));
    const rows = table.getData().map((row) => columns.map((c) => plain(row[c.name])));
    tables[name] = { columns, rows };
}
process.stdout.write(JSON.stringify({ tables }, null, 1) + "\n");
