model Unknown;

instance basin inherits Vessel(2) end basin;
