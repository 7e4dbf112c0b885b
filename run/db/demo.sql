-- The demo's directory: contacts and a call log. tgui-dbs runs this script
-- (--init) on a database file that has no tables yet, so every demo starts
-- from the same twelve contacts.
CREATE TABLE contacts(
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL,
  number TEXT,
  company TEXT,
  favourite INTEGER DEFAULT 0,
  presence INTEGER DEFAULT 0,  -- 1 reachable, 2 busy
  email TEXT,
  note TEXT,
  seen INTEGER DEFAULT 0       -- the read mark: 0 for a contact nobody has looked at
);
CREATE TABLE calls(
  number TEXT NOT NULL,
  direction TEXT NOT NULL,   -- in, out or missed
  at TEXT NOT NULL,          -- local time, ISO 8601
  seconds INTEGER DEFAULT 0,
  read INTEGER DEFAULT 0
);
BEGIN;
INSERT INTO contacts(name, number, company, favourite) VALUES
  ('Ada Lovelace', '+44 20 7946 0101', 'Analytical Engines', 1),
  ('Alan Turing', '+44 161 496 0102', 'Bletchley Park', 0),
  ('Barbara Liskov', '+1 617 555 0103', 'MIT', 0),
  ('Claude Shannon', '+1 908 555 0104', 'Bell Labs', 1),
  ('Edsger Dijkstra', '+31 40 555 0105', 'TU Eindhoven', 0),
  ('Frances Allen', '+1 914 555 0106', 'IBM Research', 0),
  ('Hedy Lamarr', '+1 310 555 0107', NULL, 1),
  ('John von Neumann', '+1 609 555 0108', 'IAS Princeton', 0),
  ('Katherine Johnson', '+1 757 555 0109', 'NASA Langley', 0),
  ('Ken Thompson', '+1 908 555 0110', 'Bell Labs', 0),
  ('Margaret Hamilton', '+1 617 555 0111', 'MIT Instrumentation Lab', 1),
  ('Niklaus Wirth', '+41 44 555 0112', 'ETH Zurich', 0);
UPDATE contacts SET seen = 1, presence = id % 3;
INSERT INTO calls(number, direction, at, seconds, read) VALUES
  ('+44 20 7946 0101', 'in', '2026-05-04 08:12:40', 312, 1),
  ('+1 908 555 0104', 'out', '2026-05-04 08:40:02', 95, 1),
  ('+41 44 555 0112', 'missed', '2026-05-04 09:03:17', 0, 0),
  ('+1 617 555 0111', 'in', '2026-05-04 09:30:55', 1204, 1),
  ('+31 40 555 0105', 'out', '2026-05-04 10:05:11', 47, 1),
  ('+1 202 555 0199', 'missed', '2026-05-04 10:41:29', 0, 0),
  ('+44 161 496 0102', 'in', '2026-05-04 11:15:00', 640, 1),
  ('+1 310 555 0107', 'out', '2026-05-04 12:02:33', 18, 1);
COMMIT;
