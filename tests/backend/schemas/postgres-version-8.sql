
SET statement_timeout = 0;
SET lock_timeout = 0;
SET idle_in_transaction_session_timeout = 0;
SET client_encoding = 'UTF8';
SET standard_conforming_strings = on;
SELECT pg_catalog.set_config('search_path', '', false);
SET check_function_bodies = false;
SET xmloption = content;
SET client_min_messages = warning;
SET row_security = off;

CREATE FUNCTION public.json_patch(document text, changes text) RETURNS text
    LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
    AS $$ SELECT '{' || coalesce(string_agg(CAST(to_json(m.key) AS TEXT) || ':' || m.value, ','  ORDER BY m.part, m.place), '') || '}' FROM (SELECT 0 AS part, d.place, d.key, CAST(coalesce(c.value, d.value) AS TEXT) AS value  FROM json_each(CAST(document AS JSON)) WITH ORDINALITY d(key, value, place)  LEFT JOIN json_each(CAST(changes AS JSON)) c ON c.key = d.key  UNION ALL SELECT 1, c.place, c.key, CAST(c.value AS TEXT)  FROM json_each(CAST(changes AS JSON)) WITH ORDINALITY c(key, value, place)  WHERE NOT EXISTS (SELECT 1 FROM json_each(CAST(document AS JSON)) d WHERE d.key = c.key)) m WHERE m.value <> 'null' $$;

SET default_tablespace = '';

SET default_table_access_method = heap;

CREATE TABLE public.documents (
    id text NOT NULL COLLATE pg_catalog."C",
    projectid text NOT NULL COLLATE pg_catalog."C",
    document text NOT NULL
);

CREATE TABLE public.plannodes (
    number bigint NOT NULL,
    id text NOT NULL COLLATE pg_catalog."C",
    planid text COLLATE pg_catalog."C",
    projectid text NOT NULL COLLATE pg_catalog."C",
    category text NOT NULL COLLATE pg_catalog."C",
    name text NOT NULL COLLATE pg_catalog."C",
    rownumber bigint NOT NULL,
    uniqueid bigint NOT NULL,
    parenttaskid bigint NOT NULL,
    startdate text COLLATE pg_catalog."C",
    finishdate text COLLATE pg_catalog."C",
    actualstartdate text COLLATE pg_catalog."C",
    actualfinishdate text COLLATE pg_catalog."C",
    createdat text COLLATE pg_catalog."C",
    updatedat text COLLATE pg_catalog."C",
    createdby text NOT NULL COLLATE pg_catalog."C",
    people text NOT NULL COLLATE pg_catalog."C",
    document text NOT NULL
);

ALTER TABLE public.plannodes ALTER COLUMN number ADD GENERATED ALWAYS AS IDENTITY (
    SEQUENCE NAME public.plannodes_number_seq
    START WITH 1
    INCREMENT BY 1
    NO MINVALUE
    NO MAXVALUE
    CACHE 1
);

CREATE TABLE public.plans (
    id text NOT NULL COLLATE pg_catalog."C",
    projectid text NOT NULL COLLATE pg_catalog."C",
    category text NOT NULL COLLATE pg_catalog."C",
    name text NOT NULL COLLATE pg_catalog."C",
    createdat text COLLATE pg_catalog."C",
    updatedat text COLLATE pg_catalog."C",
    createdby text NOT NULL COLLATE pg_catalog."C",
    document text NOT NULL,
    version text DEFAULT ''::text NOT NULL
);

CREATE TABLE public.planserviceschema (
    version integer NOT NULL
);

CREATE TABLE public.responses (
    number bigint NOT NULL,
    id text NOT NULL COLLATE pg_catalog."C",
    plannodeid text NOT NULL COLLATE pg_catalog."C",
    createdat text NOT NULL COLLATE pg_catalog."C",
    document text NOT NULL
);

ALTER TABLE public.responses ALTER COLUMN number ADD GENERATED ALWAYS AS IDENTITY (
    SEQUENCE NAME public.responses_number_seq
    START WITH 1
    INCREMENT BY 1
    NO MINVALUE
    NO MAXVALUE
    CACHE 1
);

CREATE TABLE public.rights (
    tokenid bigint NOT NULL,
    projectid text NOT NULL COLLATE pg_catalog."C",
    category text NOT NULL COLLATE pg_catalog."C",
    mayread text NOT NULL,
    maycreate boolean NOT NULL,
    mayedit boolean NOT NULL,
    maydelete boolean NOT NULL,
    mayexport boolean NOT NULL
);

CREATE TABLE public.taskstates (
    number bigint NOT NULL,
    id text NOT NULL COLLATE pg_catalog."C",
    taskid text NOT NULL COLLATE pg_catalog."C",
    projectid text NOT NULL COLLATE pg_catalog."C",
    planid text NOT NULL COLLATE pg_catalog."C",
    responseid text NOT NULL COLLATE pg_catalog."C",
    state bigint NOT NULL
);

ALTER TABLE public.taskstates ALTER COLUMN number ADD GENERATED ALWAYS AS IDENTITY (
    SEQUENCE NAME public.taskstates_number_seq
    START WITH 1
    INCREMENT BY 1
    NO MINVALUE
    NO MAXVALUE
    CACHE 1
);

CREATE TABLE public.tokens (
    id bigint NOT NULL,
    hash bytea NOT NULL,
    userid text NOT NULL COLLATE pg_catalog."C",
    createdat text NOT NULL COLLATE pg_catalog."C",
    revokedat text COLLATE pg_catalog."C",
    expiresat text COLLATE pg_catalog."C"
);

ALTER TABLE public.tokens ALTER COLUMN id ADD GENERATED ALWAYS AS IDENTITY (
    SEQUENCE NAME public.tokens_id_seq
    START WITH 1
    INCREMENT BY 1
    NO MINVALUE
    NO MAXVALUE
    CACHE 1
);

CREATE TABLE public.usersettings (
    userid text NOT NULL COLLATE pg_catalog."C",
    settingkey text NOT NULL COLLATE pg_catalog."C",
    value text NOT NULL
);

INSERT INTO public.documents VALUES ('doc-1', 'tower', '{"_id":"doc-1","name":"Formwork drawing.pdf","fileSize":734003,"suffix":"pdf","createdAt":"2026-01-08T09:00:00.000","createdBy":"ann"}');
INSERT INTO public.documents VALUES ('doc-2', 'tower', '{"_id":"doc-2","name":"施工方案 \"B\".docx","fileSize":0,"suffix":"docx","createdAt":"","createdBy":""}');

INSERT INTO public.plannodes OVERRIDING SYSTEM VALUE VALUES (1, 'node-1', 'plan-1', 'tower', 'main', 'Foundations', 1, 1, -1, NULL, NULL, NULL, NULL, '2026-01-05T08:00:00.000', '2026-01-06T08:00:00.000', 'ann', '
', '{"_id":"node-1","category":"main","name":"Foundations","finishedPercentage":0,"id":1,"uniqueId":1,"parentTaskID":-1,"GUID":"node-1-guid","planId":"plan-1","projectId":"tower","predecessors":[],"startDate":"","finishDate":"","remark":"","isDistributed":false,"dynamicEffect":-1,"displaySimulation":1,"entityHideDate":"","entityHideType":0,"planWorkload":-1,"actualWorkload":-1,"createdAt":"2026-01-05T08:00:00.000","updatedAt":"2026-01-06T08:00:00.000","createdBy":"ann","updatedBy":"bo","actualStartDate":"","actualFinishDate":"","userIds":[],"executeIds":[],"cooperateIds":[],"entity":[],"documentIds":[],"materialBills":[]}');
INSERT INTO public.plannodes OVERRIDING SYSTEM VALUE VALUES (2, 'node-2', 'plan-1', 'tower', 'main', 'Dig, 50 % "wet"', 2, 2, 1, '2026-03-02T08:00:00.000', '2026-03-04T17:00:00.000', '2026-03-03T07:30:00.000', NULL, '2026-01-05T08:00:00.000', '2026-01-06T08:00:00.000', 'ann', '
ann
bo
back\\slash
line\nend
王芳
', '{"_id":"node-2","category":"main","name":"Dig, 50 % \"wet\"","finishedPercentage":37.5,"id":2,"uniqueId":2,"parentTaskID":1,"GUID":"node-2-guid","planId":"plan-1","projectId":"tower","predecessors":[],"startDate":"2026-03-02T08:00:00.000","finishDate":"2026-03-04T17:00:00.000","remark":"tab\tand ''quote''","isDistributed":false,"dynamicEffect":2,"displaySimulation":0,"entityHideDate":"","entityHideType":0,"planWorkload":120,"actualWorkload":0,"createdAt":"2026-01-05T08:00:00.000","updatedAt":"2026-01-06T08:00:00.000","createdBy":"ann","updatedBy":"bo","actualStartDate":"2026-03-03T07:30:00.000","actualFinishDate":"","userIds":["ann","bo"],"executeIds":["back\\slash","line\nend"],"cooperateIds":["王芳"],"entity":[{"modelId":"m-1","entityIds":["e-1","e-2"]}],"documentIds":["doc-2","doc-1"],"materialBills":[{"rId":"bill-1","statusIds":["s-1"]}]}');
INSERT INTO public.plannodes OVERRIDING SYSTEM VALUE VALUES (3, 'node-3', 'plan-1', 'tower', 'other', 'Handover', 3, 3, 1, '2026-03-05T08:00:00.000', '2026-03-05T08:00:00.000', '2026-03-05T08:00:00.000', '2026-03-06T08:00:00.000', '2026-01-05T08:00:00.000', '2026-01-06T08:00:00.000', 'ann', '
bo
', '{"_id":"node-3","category":"other","name":"Handover","finishedPercentage":100,"id":3,"uniqueId":3,"parentTaskID":1,"GUID":"node-3-guid","planId":"plan-1","projectId":"tower","predecessors":[{"PredecessorUniqueID":2,"Type":1,"Lag":{"Duration":-1.5,"Units":2}}],"startDate":"2026-03-05T08:00:00.000","finishDate":"2026-03-05T08:00:00.000","remark":"","isDistributed":true,"dynamicEffect":-1,"displaySimulation":1,"entityHideDate":"2026-04-01T00:00:00.000","entityHideType":1,"planWorkload":-1,"actualWorkload":-1,"createdAt":"2026-01-05T08:00:00.000","updatedAt":"2026-01-06T08:00:00.000","createdBy":"ann","updatedBy":"bo","actualStartDate":"2026-03-05T08:00:00.000","actualFinishDate":"2026-03-06T08:00:00.000","userIds":[],"executeIds":["bo"],"cooperateIds":[],"entity":[],"documentIds":[],"materialBills":[]}');
INSERT INTO public.plannodes OVERRIDING SYSTEM VALUE VALUES (4, 'node-4', 'plan-3', 'bridge', 'week', 'Piers', -2, 2147483647, -1, NULL, '2026-03-05T08:00:00.000', NULL, NULL, '2026-01-05T08:00:00.000', '2026-01-06T08:00:00.000', 'ann', '
cy
', '{"_id":"node-4","category":"week","name":"Piers","finishedPercentage":0,"id":-2,"uniqueId":2147483647,"parentTaskID":-1,"GUID":"node-4-guid","planId":"plan-3","projectId":"bridge","predecessors":[],"startDate":"","finishDate":"2026-03-05T08:00:00.000","remark":"","isDistributed":false,"dynamicEffect":-1,"displaySimulation":1,"entityHideDate":"","entityHideType":0,"planWorkload":-1,"actualWorkload":-1,"createdAt":"2026-01-05T08:00:00.000","updatedAt":"2026-01-06T08:00:00.000","createdBy":"ann","updatedBy":"bo","actualStartDate":"","actualFinishDate":"","userIds":["cy"],"executeIds":[],"cooperateIds":[],"entity":[],"documentIds":[],"materialBills":[]}');
INSERT INTO public.plannodes OVERRIDING SYSTEM VALUE VALUES (5, 'node-5', NULL, 'tower', 'main', 'Belongs to no plan', 1, 1, -1, NULL, NULL, NULL, NULL, '2026-01-05T08:00:00.000', '2026-01-06T08:00:00.000', 'ann', '
ann
', '{"_id":"node-5","category":"main","name":"Belongs to no plan","finishedPercentage":0,"id":1,"uniqueId":1,"parentTaskID":-1,"GUID":"node-5-guid","planId":"","projectId":"tower","predecessors":[],"startDate":"","finishDate":"","remark":"","isDistributed":false,"dynamicEffect":-1,"displaySimulation":1,"entityHideDate":"","entityHideType":0,"planWorkload":-1,"actualWorkload":-1,"createdAt":"2026-01-05T08:00:00.000","updatedAt":"2026-01-06T08:00:00.000","createdBy":"ann","updatedBy":"bo","actualStartDate":"","actualFinishDate":"","userIds":["ann"],"executeIds":[],"cooperateIds":[],"entity":[],"documentIds":[],"materialBills":[]}');

INSERT INTO public.plans VALUES ('plan-1', 'tower', 'main', 'Tower "A" 塔楼', '2026-01-05T08:00:00.000', '2026-02-01T17:30:00.250', 'ann', '{"_id":"plan-1","category":"main","projectId":"tower","name":"Tower \"A\" 塔楼","projectFileId":"file-7","createdAt":"2026-01-05T08:00:00.000","updatedAt":"2026-02-01T17:30:00.250","createdBy":"ann","updatedBy":"bo","public":100,"ranges":["range-1","range 2"]}', '5f193adacbc949d8bff0ac97fe6ade41');
INSERT INTO public.plans VALUES ('plan-2', 'tower', '', 'Empty plan', NULL, NULL, '', '{"_id":"plan-2","category":"","projectId":"tower","name":"Empty plan","projectFileId":"","createdAt":"","updatedAt":"","createdBy":"","updatedBy":"","public":1,"ranges":[]}', '6f1fdfd76d5f4558a8fe19d6d5365682');
INSERT INTO public.plans VALUES ('plan-3', 'bridge', 'week', 'Bridge', '2026-01-05T08:00:00.000', '2026-01-05T08:00:00.000', 'cy', '{"_id":"plan-3","category":"week","projectId":"bridge","name":"Bridge","projectFileId":"","createdAt":"2026-01-05T08:00:00.000","updatedAt":"2026-01-05T08:00:00.000","createdBy":"cy","updatedBy":"cy","public":100,"ranges":[]}', '94d1517230374169a447267da8333953');

INSERT INTO public.planserviceschema VALUES (7);
INSERT INTO public.planserviceschema VALUES (8);

INSERT INTO public.responses OVERRIDING SYSTEM VALUE VALUES (1, 'response-1', 'node-2', '2026-03-03T12:00:00.000', '{"_id":"response-1","hostId":"node-2","remark":"second pour, 雨","percentage":37,"media":[{"fileId":"f-1","thumbnail":"t-1","time":12}],"documentIds":["doc-1"],"actualStartDate":"2026-03-03T07:30:00.000","actualFinishDate":"","createdAt":"2026-03-03T12:00:00.000","createdBy":"ann"}');
INSERT INTO public.responses OVERRIDING SYSTEM VALUE VALUES (2, 'response-2', 'node-2', '2026-03-03T12:00:00.000', '{"_id":"response-2","hostId":"node-2","remark":"","percentage":0,"media":[],"documentIds":[],"actualStartDate":"","actualFinishDate":"","createdAt":"2026-03-03T12:00:00.000","createdBy":""}');

INSERT INTO public.rights VALUES (1, 'tower', '', 'all', true, true, false, true);
INSERT INTO public.rights VALUES (1, 'tower', 'other', 'own', false, false, false, false);
INSERT INTO public.rights VALUES (3, 'bridge', '', '', false, true, true, false);

INSERT INTO public.taskstates OVERRIDING SYSTEM VALUE VALUES (1, 'state-1', 'node-2', 'tower', 'plan-1', 'response-1', 3);
INSERT INTO public.taskstates OVERRIDING SYSTEM VALUE VALUES (2, 'state-2', 'node-3', 'tower', 'plan-1', '', 0);

INSERT INTO public.tokens OVERRIDING SYSTEM VALUE VALUES (1, '\x000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f', 'ann', '2026-01-01T00:00:00Z', NULL, NULL);
INSERT INTO public.tokens OVERRIDING SYSTEM VALUE VALUES (3, '\x202122232425262728292a2b2c2d2e2f303132333435363738393a3b3c3d3e3f', 'bo "b"', '2026-01-02T00:00:00Z', '2026-02-02T00:00:00Z', NULL);
INSERT INTO public.tokens OVERRIDING SYSTEM VALUE VALUES (4, '\x404142434445464748494a4b4c4d4e4f505152535455565758595a5b5c5d5e5f', 'cy', '2026-01-02T00:00:00Z', NULL, '2030-01-01T00:00:00Z');

INSERT INTO public.usersettings VALUES ('', 'columns', '[1,2.5,null]');
INSERT INTO public.usersettings VALUES ('ann', '层 "1"', '{"wide":true}');

SELECT pg_catalog.setval('public.plannodes_number_seq', 5, true);

SELECT pg_catalog.setval('public.responses_number_seq', 2, true);

SELECT pg_catalog.setval('public.taskstates_number_seq', 2, true);

SELECT pg_catalog.setval('public.tokens_id_seq', 4, true);

ALTER TABLE ONLY public.documents
    ADD CONSTRAINT documents_pkey PRIMARY KEY (id);

ALTER TABLE ONLY public.plannodes
    ADD CONSTRAINT plannodes_id_key UNIQUE (id);

ALTER TABLE ONLY public.plannodes
    ADD CONSTRAINT plannodes_pkey PRIMARY KEY (number);

ALTER TABLE ONLY public.plans
    ADD CONSTRAINT plans_pkey PRIMARY KEY (id);

ALTER TABLE ONLY public.planserviceschema
    ADD CONSTRAINT planserviceschema_pkey PRIMARY KEY (version);

ALTER TABLE ONLY public.responses
    ADD CONSTRAINT responses_id_key UNIQUE (id);

ALTER TABLE ONLY public.responses
    ADD CONSTRAINT responses_pkey PRIMARY KEY (number);

ALTER TABLE ONLY public.rights
    ADD CONSTRAINT rights_pkey PRIMARY KEY (tokenid, projectid, category);

ALTER TABLE ONLY public.taskstates
    ADD CONSTRAINT taskstates_id_key UNIQUE (id);

ALTER TABLE ONLY public.taskstates
    ADD CONSTRAINT taskstates_pkey PRIMARY KEY (number);

ALTER TABLE ONLY public.taskstates
    ADD CONSTRAINT taskstates_taskid_key UNIQUE (taskid);

ALTER TABLE ONLY public.tokens
    ADD CONSTRAINT tokens_hash_key UNIQUE (hash);

ALTER TABLE ONLY public.tokens
    ADD CONSTRAINT tokens_pkey PRIMARY KEY (id);

ALTER TABLE ONLY public.usersettings
    ADD CONSTRAINT usersettings_pkey PRIMARY KEY (userid, settingkey);

CREATE INDEX plannodesbyparent ON public.plannodes USING btree (planid, parenttaskid);

CREATE INDEX plannodesbyproject ON public.plannodes USING btree (projectid, category, finishdate);

CREATE INDEX plannodesbyrow ON public.plannodes USING btree (planid, rownumber, id);

CREATE INDEX plannodeswithoutplan ON public.plannodes USING btree (projectid, rownumber, id) WHERE (planid IS NULL);

CREATE INDEX plansbycategory ON public.plans USING btree (projectid, category, createdat NULLS FIRST, id);

CREATE INDEX plansbychange ON public.plans USING btree (projectid, updatedat);

CREATE INDEX plansbycreation ON public.plans USING btree (projectid, createdat NULLS FIRST, id);

CREATE INDEX plansbyname ON public.plans USING hash (name);

CREATE INDEX responsesbynode ON public.responses USING btree (plannodeid, createdat, number);

CREATE INDEX taskstatesbyplan ON public.taskstates USING btree (projectid, planid);

ALTER TABLE ONLY public.plannodes
    ADD CONSTRAINT plannodes_planid_fkey FOREIGN KEY (planid) REFERENCES public.plans(id) ON DELETE CASCADE;

ALTER TABLE ONLY public.responses
    ADD CONSTRAINT responses_plannodeid_fkey FOREIGN KEY (plannodeid) REFERENCES public.plannodes(id) ON DELETE CASCADE;

ALTER TABLE ONLY public.rights
    ADD CONSTRAINT rights_tokenid_fkey FOREIGN KEY (tokenid) REFERENCES public.tokens(id) ON DELETE CASCADE;

ALTER TABLE ONLY public.taskstates
    ADD CONSTRAINT taskstates_taskid_fkey FOREIGN KEY (taskid) REFERENCES public.plannodes(id) ON DELETE CASCADE;

