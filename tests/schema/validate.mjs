// Holds specs against the printed schema with a validator that others wrote: validate.mjs SCHEMA [--not] SPEC...
// Those behind --not have to be refused.
import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';

const Ajv = createRequire(process.cwd() + '/')('ajv/dist/2020').default;
const read = (path) => JSON.parse(readFileSync(path, 'utf8').replace(/^\s*\/\/.*$/gm, ''));

const [schemaPath, ...paths] = process.argv.slice(2);
const validate = new Ajv({ allErrors: false, strict: true, strictTypes: false, strictTuples: false, strictRequired: false }).compile(read(schemaPath));
let wanted = true;
let faults = 0;
for (const path of paths) {
  if (path === '--not') {
    wanted = false;
    continue;
  }
  if (validate(read(path)) === wanted) continue;
  faults++;
  console.error(path, wanted ? JSON.stringify(validate.errors) : 'should have been refused');
}
console.log(`schema: ${paths.length} specs, ${faults} faults`);
process.exit(faults ? 1 : 0);
