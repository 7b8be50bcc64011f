"""A session with a compile server, step by step; run it as  tools/python/example.py [MODEL]  from the top folder.

It compiles a model in the background, generates C++ for all its variables, and shows what the server answers. Then it
calls compiled functions of an example model.
"""

import os
import subprocess
import sys
import tempfile

import ozlink

top = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
model = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else os.path.join(top, "examples", "tanks.oz"))

# In[1]: compile the model, and leave a server behind that holds it. It works in the folder where it was started.
folder = tempfile.mkdtemp(prefix="oz-example.")
connection = os.path.join(folder, "connection.m")
subprocess.run([os.path.join(top, "build", "oz"), "-s", "-d", "-o", connection, model], cwd=folder, check=True)

# In[2]: connect; the file tells where.
server = ozlink.connect_file(connection)
print("commands:", ", ".join(server.definitions))

# In[3]: C++ for the variables of all instances.
print("open:    ", server.OpenFileInternal("tanks", "C++", False))
print("generate:", server.GenerateVariableInternal("Hold[]"))
print("close:   ", server.CloseFileInternal())

# In[4]: what came out.
for name in sorted(os.listdir(folder)):
    print("%8d bytes  %s" % (os.path.getsize(os.path.join(folder, name)), name))

# In[5]: the server ends with its link.
server.close()

# In[6]: compiled functions, with numbers and lists. The build makes link programs of the examples.
with ozlink.run([os.path.join(top, "build", "examples", "link-mechanism")]) as mechanism:
    print("norm:    ", mechanism.norm([3, 4]))
    print("wedge:   ", mechanism.wedge([1.0, 2.0], [3.0, 4.0]))
