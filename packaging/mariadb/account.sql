-- The database of an inventory and the account that uses it, with the least rights that do.
--
--   mariadb < account.sql
--   mariadb -e "ALTER USER zymdb IDENTIFIED BY '…' ACCOUNT UNLOCK"
--
-- The account may make the tables that it lacks and add columns to them, as a new version does; it drops none. Who
-- keeps that to himself runs `zymdb init` as another user and takes CREATE, ALTER and INDEX from this one.
CREATE DATABASE IF NOT EXISTS inventory CHARACTER SET binary;
CREATE USER IF NOT EXISTS zymdb REQUIRE SSL ACCOUNT LOCK;
GRANT SELECT, INSERT, UPDATE, DELETE ON inventory.* TO zymdb;
GRANT CREATE, ALTER, INDEX, CREATE TEMPORARY TABLES ON inventory.* TO zymdb;
