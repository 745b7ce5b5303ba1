-- The demo file's tables. fmsim --seed runs this on the current file's database.
CREATE TABLE Contacts (
    id      INTEGER PRIMARY KEY,
    name    TEXT NOT NULL,
    city    TEXT,
    born    DATE,
    balance REAL
);
INSERT INTO Contacts (id, name, city, born, balance) VALUES
    (1, 'Ada Lovelace',    'London', '1815-12-10', 1250.5),
    (2, 'Émile Durand',    'Lyon',   '1990-02-28', -42),
    (3, 'Grace Hopper',    'New York', '1906-12-09', 0.25),
    (4, 'Søren Ørsted',    'Aarhus', NULL, 310);

CREATE TABLE Invoices (
    id         INTEGER PRIMARY KEY,
    contact_id INTEGER NOT NULL REFERENCES Contacts (id),
    issued     TIMESTAMP,
    due        DATE,
    amount     REAL
);
INSERT INTO Invoices (id, contact_id, issued, due, amount) VALUES
    (101, 1, '2024-01-31 13:05:00', '2024-02-29', 199.99),
    (102, 1, '2024-03-01 09:30:00', '2024-03-31', 75),
    (103, 3, '2024-06-15 17:45:30', '2024-07-15', 1200);
