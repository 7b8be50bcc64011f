model E;
instance b end;
instance a inherits b end;
